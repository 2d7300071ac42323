# to come
