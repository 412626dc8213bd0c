// The C consumer, compiled as C++: the headers' C++ form.
#include "main.c"
