#pragma once

#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"
#include "ui/scanui.h"

inline const QString kCutGood = "Cut success, file path is /o/Cut_a.mp4 ";
inline const QString kCutBad =
    "Clip failed, not an valid format, it's better to clip created mp4 files";
inline const QString kMergeGood = "Merge success, file path is /o/M.mp4 ";
inline const QString kMergeBad =
    "Merge failed, not an valid format, it's better to merge created mp4 files";

// A progress dialog that follows a window whose reports the test sends.
class ProgressDialogTest : public QObject
{
    Q_OBJECT

protected:
    void Prepare()
    {
        SCANUI::m_nError = 0;
        SCANUI::m_nOprType = 0;
        DRUI::m_bisFinished = false;
        m_window = std::make_unique<DRUI>();
        m_boxes = std::make_unique<ModalBoxes>();
        Build();
    }

    void Finish()
    {
        m_dialog.reset();
        m_boxes.reset();
        m_window.reset();
    }

    void Build()
    {
        m_dialog = std::make_unique<SCANUI>();
        m_dialog->InitSlot(m_window.get());
    }

    void Emit(const QByteArray& signal, int percent, const QString& current,
              const QString& destination, int error)
    {
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), signal.constData(), Q_ARG(int, percent),
                                          Q_ARG(QString, current), Q_ARG(QString, destination),
                                          Q_ARG(int, error)));
    }
    void Cut(int percent, int error)
    {
        Emit("CutProcessCallBack", percent, "/v/a.mp4", "/o/Cut_a.mp4", error);
    }
    void Merge(int percent, int error)
    {
        Emit("AddProcessCallBack", percent, "/v/a.mp4", "/o/M.mp4", error);
    }

    void PressButton(const QString& text) { ::PressButton(m_dialog.get(), text); }

    std::unique_ptr<DRUI> m_window;
    std::unique_ptr<SCANUI> m_dialog;
    std::unique_ptr<ModalBoxes> m_boxes;
};
