// Keeps the instrumented static build of the library non-empty.
namespace kt { int asan_anchor = 0; }
