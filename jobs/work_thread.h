#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <thread>

// Work for a thread of its own, because it may hang: calls for a folder on a dead network share
// come back after minutes, or never.
class WorkThread
{
public:
    /// Starts `work`, which must own all it uses.
    explicit WorkThread(std::function<void()> work);

    /// Waits for nothing: a thread that still works is left behind.
    ~WorkThread();
    Q_DISABLE_COPY_MOVE(WorkThread)

    /// Blocks until the work is done, `milliseconds` at most. Returns whether it is done.
    bool Wait(int milliseconds) const;
    bool IsDone() const { return Wait(0); }

    /// Invokes the slot, from the event loop of the receiver's thread, when the work is done. The
    /// receiver must live as long as this object.
    void CallWhenDone(QObject& receiver, const char* slot);

private:
    struct State;

    static void Run(const std::shared_ptr<State>& state, const std::function<void()>& work);

    std::shared_ptr<State> m_state;
    std::thread m_thread;
};

/// Whether a thread has been left behind. It may come back at any moment, so the program must then
/// end without destroying global objects.
bool IsThreadLeftBehind();
