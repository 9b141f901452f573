#pragma once

#include "ui_cmessagebox.h"

#include <QDialog>

class FocusRing;
class QLabel;

// The program's modal message box: a frameless information dialog with OK, or a question with NO
// and OK. Drag it with the left mouse button, dismiss it with a right click. For each message
// construct it, place it, call one Init function, exec() it and read the answer.
class CMessageBox : public QDialog
{
    Q_OBJECT

public:
    /// Both arguments are ignored on purpose: the dialog never has a parent.
    explicit CMessageBox(QDialog* parent = nullptr, Qt::WindowFlags flags = {});

    /// Lays out the dialog for its current width (400 by default).
    void InitInfoDialog(QString text);
    void InitQuestionDialog(QString text);

    /// 1 after OK, else 0.
    int GetMessageBoxRet() const;

    /// Closes the dialog with the result 0.
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
    void AddEdge();
    void AddButton(QLabel* bar, int left, const QString& text, const char* slot);

    Ui_Dialog ui;
    QPoint m_dragOffset;
    QLabel* m_pMessageLabel = nullptr;
    FocusRing* m_pFocusRing = nullptr;
    int m_nRet = 0;
};
