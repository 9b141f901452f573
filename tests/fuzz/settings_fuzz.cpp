// The settings file: any content is read safely, and a directory chosen later is stored.
#include "jobs/settings.h"
#include "tests/fuzz/target.h"

#include <QFile>

namespace {

// Directory names are valid file names; "\n" ends the first line of the input.
QString DirectoryIn(const QByteArray& bytes)
{
    return '/' + QString::fromUtf8(bytes.left(bytes.indexOf('\n'))).remove(QChar(0));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // A new name for each run: QSettings caches files with the same name, size and time.
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
