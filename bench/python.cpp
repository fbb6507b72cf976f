// Python itself, as a program over the same runtime library that the other contenders use: Debian's
// own program has the interpreter inside, and runs up to half as fast again.
#include <Python.h>

int main(int argc, char** argv) { return Py_BytesMain(argc, argv); }
