// Signals as events of a poll loop.
#pragma once

#include "tool/system/pipe.h"

#include <csignal>
#include <initializer_list>
#include <optional>
#include <vector>

namespace tool {

// Catches signals of this process while it exists. There may be one object at a time in a process;
// a forked child needs one of its own.
class Signals
{
public:
    // A signal that is ignored stays ignored; SIGCHLD never is, or the
    // exit codes of children would be lost.
    explicit Signals(std::initializer_list<int> numbers);
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals();

    // Can be read from when a signal has arrived. -1 if there can be no pipe.
    int Number() const { return m_pipe ? m_pipe->read.Number() : -1; }
    // Returns the signals that have arrived since the last call one by one, then nothing.
    std::optional<int> Next();

private:
    std::optional<Pipe> m_pipe;
    std::vector<int> m_caught;
};

// Whether this process ignores the signal, as SIGHUP under nohup.
bool IsIgnored(int number);

// Ignores them, in this process and the programs it starts.
void IgnoreSignals(std::initializer_list<int> numbers);

// Keeps all signals from the calling thread while it exists, and from the threads it starts.
class SignalBlock
{
public:
    SignalBlock();
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;
    ~SignalBlock();

private:
    sigset_t m_before{};
};

} // namespace tool
