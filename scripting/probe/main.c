/* Starts one interpreter and ends: python-probe LIBRARY HOME. A broken installation ends the process that
   starts it, so the program lets this one try first. Exit status 0 when the interpreter came up. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

typedef void (*Initialize)(void);
typedef int (*RunString)(const char *, void *);

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    setenv("PYTHONHOME", argv[2], 1);
    void *library = dlopen(argv[1], RTLD_LAZY | RTLD_GLOBAL);
    if (!library) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    Initialize initialize = (Initialize)dlsym(library, "Py_Initialize");
    RunString run = (RunString)dlsym(library, "PyRun_SimpleStringFlags");
    if (!initialize || !run) {
        fprintf(stderr, "%s is no Python library\n", argv[1]);
        return 1;
    }
    initialize();
    /* Without sys.path entries that exist the first import of a script would fail. */
    const int failed = run("import os, sys, io, codecs, threading, signal", NULL);
    fflush(NULL);
    _exit(failed ? 1 : 0);
}
