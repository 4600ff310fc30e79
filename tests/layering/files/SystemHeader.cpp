// SystemHeader.cpp - a layering fault for the check to find: a class file
// using an operating-system header. Never compiled.
#include <unistd.h>
