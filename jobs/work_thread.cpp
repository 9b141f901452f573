#include "jobs/work_thread.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace {

bool isLeftBehind = false;

} // namespace

// Owned by both threads.
struct WorkThread::State
{
    std::mutex mutex;
    std::condition_variable change;
    bool isDone = false;
    QObject* receiver = nullptr;
    const char* slot = nullptr;
};

WorkThread::WorkThread(std::function<void()> work)
    : m_state(std::make_shared<State>()),
      m_thread(Run, m_state, std::move(work))
{
}

WorkThread::~WorkThread()
{
    std::unique_lock lock(m_state->mutex);
    m_state->receiver = nullptr;
    const bool isDone = m_state->isDone;
    lock.unlock();
    if (isDone) {
        m_thread.join();
    } else {
        m_thread.detach();
        isLeftBehind = true;
    }
}

bool WorkThread::Wait(int milliseconds) const
{
    std::unique_lock lock(m_state->mutex);
    return m_state->change.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                    [this] { return m_state->isDone; });
}

void WorkThread::CallWhenDone(QObject& receiver, const char* slot)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->receiver = &receiver;
    m_state->slot = slot;
    if (m_state->isDone) {
        QMetaObject::invokeMethod(&receiver, slot, Qt::QueuedConnection);
    }
}

void WorkThread::Run(const std::shared_ptr<State>& state, const std::function<void()>& work)
{
    work();
    const std::lock_guard lock(state->mutex);
    state->isDone = true;
    state->change.notify_all();
    if (state->receiver != nullptr) {
        QMetaObject::invokeMethod(state->receiver, state->slot, Qt::QueuedConnection);
    }
}

bool IsThreadLeftBehind()
{
    return isLeftBehind;
}
