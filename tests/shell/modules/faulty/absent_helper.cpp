__declspec(dllexport) int absentHelper() { return 1; }
