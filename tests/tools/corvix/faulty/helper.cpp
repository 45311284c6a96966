#if defined(COMPLETE)
__declspec(dllexport) int absentFunction() { return 1; }
#endif
__declspec(dllexport) int presentFunction() { return 2; }
