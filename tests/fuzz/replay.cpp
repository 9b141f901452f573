// Runs a fuzz target once on every file of the given folders, so that the inputs in corpus/ are
// tested in every build, with any compiler.
#include "tests/fuzz/target.h"

#include <QDirIterator>
#include <QFile>

#include <cstdio>

int main(int count, char** values)
{
    int inputs = 0;
    for (int i = 1; i < count; ++i) {
        QDirIterator files(QString::fromLocal8Bit(values[i]), QDir::Files);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "%s cannot be read\n", qPrintable(file.fileName()));
                return 1;
            }
            // The last line of output is the input that failed.
            std::fprintf(stderr, "%s\n", qPrintable(file.fileName()));
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()),
                                   static_cast<size_t>(bytes.size()));
            ++inputs;
        }
    }
    if (inputs == 0) {
        std::fprintf(stderr, "no input in the folders named\n");
        return 1;
    }
    std::fprintf(stderr, "%d inputs hold\n", inputs);
    return 0;
}
