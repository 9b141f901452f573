// Draws the question a cancel asks, for the pictures in the documents. Jobs keep the window busy,
// so it cannot be captured in the program.
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
