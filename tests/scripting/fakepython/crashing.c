/* Ends the process that starts it. */
#include <stdlib.h>
void Py_Initialize(void)
{
    abort();
}
int PyRun_SimpleStringFlags(const char *code, void *flags)
{
    return code && !flags ? 0 : 0;
}
