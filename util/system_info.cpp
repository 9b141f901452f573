#include "util/system_info.h"

int bIsRemovableMedia(const wchar_t* /*drive*/)
{
    return 0;
}

int GetDriverFreeSpace(const wchar_t* /*drive*/, unsigned long long& /*bytes*/)
{
    return 0;
}

int GetDriverFileSystem(const wchar_t* /*drive*/, wchar_t* /*name*/, int /*size*/)
{
    return 0;
}

int GetDiskBytes(const wchar_t* /*drive*/, unsigned long long& /*bytes*/)
{
    return 0;
}

int CloseProcess(const wchar_t* /*name*/)
{
    return 0;
}

int CheckHasAnotherAppInstance(const wchar_t* /*name*/)
{
    return 0;
}
