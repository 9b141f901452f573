#pragma once

#include "ui/cmessagebox.h"

#include <QDialog>
#include <QPointer>

class DRUI;
class QLabel;
class QProgressBar;
class QVBoxLayout;

// The progress dialog of a cut or merge: progress bar, text and Cancel. Asks before it cancels a
// job and shows the outcome when it closes. It follows the main window's two report signals; the
// job runs on the same thread and dispatches events while it waits for the tool.
class SCANUI : public QDialog
{
    Q_OBJECT

public:
    explicit SCANUI(QDialog* parent = nullptr, Qt::WindowFlags flags = {});

    /// Connects to the reports of `drui`, which has to outlive the dialog.
    void InitSlot(DRUI* drui);

    /// Places the dialog over `window`, shows it and waits up to a second until it is drawn.
    void ShowOver(const QWidget& window);

    // Shared by all dialogs and kept from job to job; only reports change them.
    static int m_nOprType;     // of the last report: 2 cut, 1 merge
    static bool m_bIsFinished; // the job has reported 100 percent; cleared by a new dialog
    static int m_nError;       // of the last report: 0 none, 1 invalid data, 2 cancelled
    static QPointer<QProgressBar> m_progressBar; // of the newest dialog

public Q_SLOTS:
    void AddProcessCallBackSlot(int percent, QString current, QString destination, int error);
    void CutProcessCallBackSlot(int percent, QString current, QString destination, int error);
    void btnSlot();

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private Q_SLOTS:
    void Answer();

private:
    void InitDialog();
    QLabel* CreateStrip();
    QVBoxLayout* CreateBody();
    void Report(int operation, int percent, const QString& current, const QString& destination,
                int error);
    void CloseForReport();
    void AskToCancel();
    void Tell(const QString& text);
    QRect BoxPlace() const;

    DRUI* m_pDrui = nullptr;
    QLabel* m_labelInfo = nullptr;
    QString m_strDestination; // of the last report
    CMessageBox m_msgBox;     // the cancel question
    bool m_bIsTelling = false;
};
