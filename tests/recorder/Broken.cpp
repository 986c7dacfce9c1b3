// Plug-ins that the dynamic loader refuses, or that it would be better off refusing.

#if defined BROKEN_UNDEFINED
extern int g_nNowhere; // data is looked up when the library is opened, functions when they are called
int* g_pnNowhere = &g_nNowhere;
#elif defined BROKEN_THROWS
struct tagThrows
{
    tagThrows() { throw 1; }
} g_tThrows;
#else
int NeededElsewhere();
#if defined BROKEN_NEEDS
int g_nNeeded = NeededElsewhere();
#else
int NeededElsewhere() // in the library that won't be found
{
    return 1;
}
#endif
#endif
