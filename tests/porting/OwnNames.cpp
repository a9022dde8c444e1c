// A part of the program that has its own function of a Windows name, and includes no header for it.
int _stricmp(const char*, const char*) {
    return 42;
}

int ownComparison(const char* a, const char* b);
int ownComparison(const char* a, const char* b) {
    return _stricmp(a, b);
}
