/* The names of a Python 2 library: one symbol for both kinds of text. */
const char *PyString_AsString(void *object)
{
    return object;
}
void *PyString_FromString(const char *text)
{
    return (void *)text;
}
void *PyUnicodeUCS2_Join(void *separator, void *list)
{
    return separator ? separator : list;
}
