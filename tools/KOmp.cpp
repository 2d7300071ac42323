#include "KOmp.h"

int komp_num_threads = 1;
int komp_num_cores = 1;

int komp_get_thread_num()
{
    return omp_get_thread_num();
}
