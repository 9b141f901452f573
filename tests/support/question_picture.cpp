// Draws the question that a cancel raises: while jobs keep the window busy, nobody sees it asked.
// For the documents' pictures alone.
#include "jobs/job_report.h"
#include "ui/cmessagebox.h"

#include <QApplication>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    CMessageBox box(nullptr, {});
    box.InitQuestionDialog(CancelQuestion(kMergeOperation));
    box.show();
    return box.grab().save(application.arguments().value(1)) ? 0 : 1;
}
