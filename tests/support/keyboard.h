#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <array>
#include <chrono>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

// A pipe to type keys into. Input() is the descriptor ffmpeg reads: the read end, or what replaced
// it.
class Keyboard
{
public:
    Keyboard() { Q_UNUSED(pipe(m_ends.data())); }
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;
    ~Keyboard()
    {
        StopReading();
        StopTyping();
    }

    int Input() const { return m_ends[0]; }
    bool Type(const QByteArray& keys)
    {
        return write(m_ends[1], keys.data(), static_cast<size_t>(keys.size())) == keys.size();
    }
    void StopTyping() { Close(m_ends[1]); }
    void StopReading() { Close(m_ends[0]); }

    // Bytes typed but not read yet.
    int Untaken() const
    {
        int bytes = -1;
        ioctl(m_ends[1], FIONREAD, &bytes);
        return bytes;
    }

    // Whether ffmpeg would find a key if it looked now.
    bool HasKey() const { return Read(std::chrono::milliseconds(0)) != "nothing"; }

    // The next key, or "nothing" after a timeout.
    QByteArray Read(std::chrono::milliseconds patience = std::chrono::seconds(10)) const
    {
        pollfd keys{m_ends[0], POLLIN, 0};
        std::array<char, 100> text{};
        return poll(&keys, 1, static_cast<int>(patience.count())) == 1
                   ? QByteArray(text.data(),
                                static_cast<int>(read(m_ends[0], text.data(), text.size())))
                   : QByteArray("nothing");
    }

    // Reads this many keys in any number of chunks, or fewer after a timeout.
    QByteArray ReadAll(int count) const
    {
        QByteArray keys;
        while (keys.size() < count) {
            const QByteArray more = Read();
            if (more == "nothing" || more.isEmpty()) {
                break;
            }
            keys += more;
        }
        return keys;
    }

private:
    static void Close(int& end) { close(std::exchange(end, -1)); }

    std::array<int, 2> m_ends{};
};
