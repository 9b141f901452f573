#include "app/debug_output.h"

#include <QLoggingCategory>
#include <QtGlobal>

namespace {

QLoggingCategory::CategoryFilter g_pRules =
    nullptr; // Qt's own filter, which applies the logging rules

// The program's messages are in the default category.
void ApplyRules(QLoggingCategory* category)
{
    g_pRules(category);
    if (qstrcmp(category->categoryName(), "default") == 0) {
        category->setEnabled(QtDebugMsg, true);
    }
}

} // namespace

void SendDebugOutputToStandardError()
{
    // A Qt built for journald or syslog logs there otherwise.
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    qunsetenv("QT_MESSAGE_PATTERN"); // may omit the text
    if (g_pRules == nullptr) {
        g_pRules = QLoggingCategory::installFilter(nullptr);
        QLoggingCategory::installFilter(ApplyRules); // calls it at once
    }
}
