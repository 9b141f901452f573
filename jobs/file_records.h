#pragma once

#include <QString>

#include <string>

// Plain, fixed-size records of video files, copied by value.

/// One MP4 file of a scanned folder.
struct _FILE_INFO_
{
    qint64 llSize = 0;             // bytes
    std::string strOther;          // never set
    wchar_t szModifyTime[64] = {}; // local time, "yyyy-MM-dd hh:mm:ss"
    wchar_t szFileName[256] = {};  // with its extension, without its directory
};

/// One row of the merge page's tables, kept while the page is rebuilt.
struct _MERGER_FILE_INFO_
{
    wchar_t szSize[64] = {};
    wchar_t szTime[64] = {};
    wchar_t szFileName[256] = {};
};

/// Copies `text` to `out`, truncated to `size` wide characters including the terminator.
void CopyWide(const QString& text, wchar_t* out, qsizetype size);

template <qsizetype size>
void CopyWide(const QString& text, wchar_t (&out)[size])
{
    CopyWide(text, out, size);
}
