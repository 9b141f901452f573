// The settings file: whatever stands in it, it is read without harm, and a directory chosen later
// is kept.
#include "jobs/settings.h"
#include "tests/fuzz/target.h"

#include <QFile>

namespace {

// Directories have names that files can have; "\n" ends the input's first line.
QString DirectoryIn(const QByteArray& bytes)
{
    return '/' + QString::fromUtf8(bytes.left(bytes.indexOf('\n'))).remove(QChar(0));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // A name of its own for each run: what has the same name, size and time is not read again.
    static int run = 0;
    const ScratchFile file(std::to_string(++run) + ".ini");
    const QString path = QString::fromStdString(file.Path());
    const QByteArray content(reinterpret_cast<const char*>(data), qsizetype(size));

    file.Write(data, size);
    ReadSavePath(path);
    Require(file.Read() == content, "reading leaves the file as it is");

    const QString directory = DirectoryIn(content);
    WriteSavePath(path, directory);
    const QByteArray written = file.Read();
    Require(written != content || ReadSavePath(path) == directory, "the directory is written");
    Require(ReadSavePath(path) == directory,
            "the directory is read back: " + directory.toStdString());
    file.Remove();
    return 0;
}
