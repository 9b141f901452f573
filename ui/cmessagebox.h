#pragma once

#include "ui_cmessagebox.h"

#include <QDialog>

class FocusRing;
class QLabel;

// The program's own modal message: a frameless information dialog with OK, or a question with NO
// and OK. The left mouse button drags it, a right click dismisses it. One object serves one
// message: construct, place, initialise once, exec(), read.
class CMessageBox : public QDialog
{
    Q_OBJECT

public:
    /// Both arguments are ignored, which is meant: the dialog never has a parent.
    explicit CMessageBox(QDialog* parent = nullptr, Qt::WindowFlags flags = {});

    /// Lays the dialog out for its width at the time of the call (400 unless changed before).
    void InitInfoDialog(QString text);
    void InitQuestionDialog(QString text);

    /// 1 after OK, else 0.
    int GetMessageBoxRet() const;

    /// Result 0, and closed.
    void Close();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private Q_SLOTS:
    void btnSlotOK();
    void btnSlotNO();

private:
    QLabel* StartLayout();
    void AddTitle(QLabel* strip, int left, const QString& text);
    QLabel* AddBodyAndBar(const QString& picture, const QString& text);
    void AddButton(QLabel* bar, int left, const QString& text, const char* slot);

    Ui_Dialog ui;
    QPoint m_dragOffset;
    QLabel* m_pMessageLabel = nullptr;
    FocusRing* m_pFocusRing = nullptr;
    int m_nRet = 0;
};
