#include "jobs/tool_reason.h"

#include <QRegularExpression>

namespace {

constexpr auto kOwnMark = "tool: ";
constexpr qsizetype kLongestLine = 200;

bool IsProgress(const QString& line)
{
    return line.startsWith("frame=");
}

// ffmpeg does not mark its messages. Indented lines describe an input or an output, with names that
// could say anything.
bool SaysWhy(const QString& line)
{
    if (line.startsWith(kOwnMark)) {
        return true;
    }
    static const QRegularExpression description("^(\\s|Input #|Output #|frame=)");
    static const QRegularExpression fault("error|fail|cannot|could not|unable|denied|invalid|no "
                                          "such|not found|not a directory|no space|exceeded|too "
                                          "large|read-only|received signal|killed",
                                          QRegularExpression::CaseInsensitiveOption);
    return line.contains(fault) && !line.contains(description) && line != "Conversion failed!";
}

// Removes what only a developer can read.
QString WithoutMarks(QString line)
{
    static const QRegularExpression module("^(\\[[^\\]]* @ [^\\]]*\\] )+");
    static const QRegularExpression function("^\\w+\\(\\): ");
    line.remove(module).remove(function);
    if (line.startsWith(kOwnMark)) {
        line.remove(0, QString(kOwnMark).size());
    }
    while (line.endsWith('.')) {
        line.chop(1);
    }
    return line;
}

} // namespace

QString PlainLine(QString text)
{
    for (QChar& character : text) {
        if (!character.isPrint() && !character.isSurrogate()) {
            character = ' ';
        }
    }
    text = text.simplified();
    if (text.size() > kLongestLine) {
        const qsizetype kept = kLongestLine / 2;
        text.replace(kept, text.size() - 2 * kept + 1, QChar(0x2026)); // an ellipsis
    }
    return text;
}

QString ReasonIn(const QString& output, bool killed)
{
    static const QRegularExpression lineEnd("[\r\n]+");
    QString reason;
    for (const QString& line : output.split(lineEnd, Qt::SkipEmptyParts)) {
        if (SaysWhy(line)) {
            reason = line;
        } else if (killed && IsProgress(line)) {
            reason.clear();
        }
    }
    return PlainLine(WithoutMarks(QString::fromUtf8(reason.toLatin1())));
}
