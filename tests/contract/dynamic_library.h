/* Loading the library by its path, on both platforms. */
#ifndef DYNAMIC_LIBRARY_H
#define DYNAMIC_LIBRARY_H

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
typedef HMODULE DynamicLibrary;
#define open_library(path) LoadLibraryA(path)
#define find_symbol(library, name) ((void*)GetProcAddress(library, name))
#else
#include <dlfcn.h>
typedef void* DynamicLibrary;
#define open_library(path) dlopen(path, RTLD_NOW)
#define find_symbol(library, name) dlsym(library, name)
#endif

#endif
