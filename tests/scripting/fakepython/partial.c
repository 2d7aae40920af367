/* Some entry points, not all that scripts need. */
const char *Py_GetVersion(void)
{
    return "3.11.0";
}
void Py_Initialize(void) { }
int PyRun_SimpleStringFlags(const char *code, void *flags)
{
    return code && !flags ? 0 : 0;
}
int PyImport_AppendInittab(const char *name, void *init)
{
    return name && init ? 0 : 0;
}
const char *PyUnicode_AsUTF8(void *object)
{
    return object;
}
const char *PyBytes_AsString(void *object)
{
    return object;
}
void *PyUnicode_FromString(const char *text)
{
    return (void *)text;
}
void *PyString_FromString(const char *text)
{
    return (void *)(text + 1);
}
void *PyUnicode_Join(void *separator, void *list)
{
    return separator ? separator : list;
}
