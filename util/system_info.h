#pragma once

// On this platform these do nothing and return 0: no drive counts as removable, and nothing detects
// a second instance of the program. Both are intended.
int bIsRemovableMedia(const wchar_t* drive);
int GetDriverFreeSpace(const wchar_t* drive, unsigned long long& bytes);
int GetDriverFileSystem(const wchar_t* drive, wchar_t* name, int size);
int GetDiskBytes(const wchar_t* drive, unsigned long long& bytes);
int CloseProcess(const wchar_t* name);
int CheckHasAnotherAppInstance(const wchar_t* name);
