#pragma once

#include <QThread>

// A thread for one job. The window holds one and never starts it: jobs run on the user-interface
// thread. It stays so that a job can be moved onto it without another design.
class CMyThread : public QThread
{
    Q_OBJECT

public:
    using Function = void (*)(void*, int&);

    explicit CMyThread(QObject* parent = nullptr);

    /// What run() calls, and with which argument.
    void SetFunc(Function func, void* param);

    /// Calls the stored function with the stored argument and a result that starts at 0; returns at
    /// once when none is stored.
    void run() override;

    /// For a job's progress; nothing emits it.
    Q_SIGNAL void ProcessCallBack(int percent);

private:
    Function m_pFunc = nullptr;
    void* m_pParam = nullptr;
    [[maybe_unused]] int m_nReserved = 0; // read by nothing, and meant to be
};
