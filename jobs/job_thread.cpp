#include "jobs/job_thread.h"

CMyThread::CMyThread(QObject* parent) : QThread(parent) {}

void CMyThread::SetFunc(Function func, void* param)
{
    m_pFunc = func;
    m_pParam = param;
}

void CMyThread::run()
{
    if (m_pFunc != nullptr) {
        int result = 0;
        m_pFunc(m_pParam, result);
    }
}
