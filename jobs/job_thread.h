#pragma once

#include <QThread>

// A thread for one job. The window owns one and never starts it: jobs run on the GUI thread. It
// exists so that a job can be moved to a thread without a redesign.
class CMyThread : public QThread
{
    Q_OBJECT

public:
    using Function = void (*)(void*, int&);

    explicit CMyThread(QObject* parent = nullptr);

    /// Sets the function that run() calls, and its argument.
    void SetFunc(Function func, void* param);

    /// Calls the stored function, if any, with the stored argument and a result initialised to 0.
    void run() override;

    /// Progress of the job. Never emitted.
    Q_SIGNAL void ProcessCallBack(int percent);

private:
    Function m_pFunc = nullptr;
    void* m_pParam = nullptr;
    [[maybe_unused]] int m_nReserved = 0; // unused on purpose
};
