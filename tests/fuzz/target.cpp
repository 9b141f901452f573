#include "tests/fuzz/target.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

void RequirementFailed(const char* condition, const std::string& sentence, const char* file,
                       int line)
{
    std::fprintf(stderr, "%s:%d: %s\n  not: %s\n", file, line, sentence.c_str(), condition);
    std::abort();
}

std::string TextOf(const uint8_t* data, size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

QString ToolTextOf(const uint8_t* data, size_t size)
{
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)).constData());
}

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        lines.emplace_back(text.substr(at, end - at).c_str());
        at = end + 1;
    }
    return lines;
}

ScratchFile::ScratchFile(const std::string& name)
{
    static const QTemporaryDir folder;
    m_path = folder.filePath(QString::fromStdString(name)).toStdString();
}

void ScratchFile::Write(const uint8_t* data, size_t size) const
{
    QFile file(QString::fromStdString(m_path));
    Require(file.open(QIODevice::WriteOnly | QIODevice::Truncate),
            "no file can be written: " + m_path);
    file.write(reinterpret_cast<const char*>(data), qint64(size));
}

QByteArray ScratchFile::Read() const
{
    QFile file(QString::fromStdString(m_path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ScratchFile::Remove() const
{
    QFile::remove(QString::fromStdString(m_path));
}
