// The module that is loaded when a HEIF, AVIF or JPEG XL file is first opened. It contains no code: it only links to
// the libraries for these formats, so that the package's dependencies include them. See core/late_function.h.
