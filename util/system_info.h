#pragma once

// These ask nothing, change nothing and return 0 on this platform. So no drive counts as removable,
// and a second copy of the program is never found: nothing guards against one, and that is meant.
int bIsRemovableMedia(const wchar_t* drive);
int GetDriverFreeSpace(const wchar_t* drive, unsigned long long& bytes);
int GetDriverFileSystem(const wchar_t* drive, wchar_t* name, int size);
int GetDiskBytes(const wchar_t* drive, unsigned long long& bytes);
int CloseProcess(const wchar_t* name);
int CheckHasAnotherAppInstance(const wchar_t* name);
