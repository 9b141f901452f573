#pragma once

#include "jobs/work_thread.h"

#include <QString>

#include <memory>
#include <optional>

/// How long the window may wait for a folder, in milliseconds. One that works answers within a few.
inline constexpr int kMomentMs = 500;

// A question about a path that is asked again and again, and may hang (WorkThread).
template <class Answer>
class SlowQuestion
{
public:
    using Function = Answer (*)(const QString& path);

    explicit SlowQuestion(Function ask) : m_ask(ask) {}

    /// Asks and waits for kMomentMs. If the answer takes longer, returns the last one about the
    /// same path, or nothing. From then on calls with this path do not wait, and ask again only
    /// when the answer has come.
    std::optional<Answer> Ask(const QString& path)
    {
        if (path != m_path) {
            m_thread.reset();
            m_last.reset();
            m_isSlow = false;
            m_path = path;
        }
        Take();
        if (m_thread == nullptr) {
            Start();
        }
        Take(m_isSlow ? 0 : kMomentMs);
        m_isSlow = m_isSlow || m_thread != nullptr;
        return m_last;
    }

    /// The last answer about the path.
    std::optional<Answer> Last()
    {
        Take();
        return m_last;
    }

    /// Invokes the receiver's slot when an answer comes that Ask() did not wait for.
    void CallWhenAnswered(QObject& receiver, const char* slot)
    {
        if (m_thread != nullptr) {
            m_thread->CallWhenDone(receiver, slot);
        }
    }

private:
    void Take(int milliseconds = 0)
    {
        if (m_thread != nullptr && m_thread->Wait(milliseconds)) {
            m_thread.reset();
            m_last = *m_answer;
        }
    }

    void Start()
    {
        m_answer = std::make_shared<Answer>();
        m_thread = std::make_unique<WorkThread>(
            [answer = m_answer, ask = m_ask, path = m_path] { *answer = ask(path); });
    }

    Function m_ask;
    QString m_path;
    std::shared_ptr<Answer> m_answer; // that m_thread looks for
    std::unique_ptr<WorkThread> m_thread;
    std::optional<Answer> m_last;
    bool m_isSlow = false; // the path
};
