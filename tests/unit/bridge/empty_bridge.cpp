// A bridge library that has none of the functions that are looked for.

extern "C" __declspec(dllexport) int __cdecl executejavascript();
extern "C" int __cdecl executejavascript() { return 0; }
