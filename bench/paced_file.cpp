#include "bench/paced_file.h"

#include <QFile>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int kPipeBytes = 1 << 20; // as `tool` asks for

// Returns false if nobody reads any more.
bool WriteAll(int pipe, const QByteArray& piece)
{
    qsizetype written = 0;
    while (written < piece.size()) {
        const ssize_t count =
            write(pipe, piece.constData() + written, static_cast<size_t>(piece.size() - written));
        if (count < 0) {
            return false;
        }
        written += count;
    }
    return true;
}

} // namespace

PacedFile::PacedFile(QString file, qint64 pieceBytes, double interval, double delay)
    : m_file(std::move(file)),
      m_nPieceBytes(pieceBytes),
      m_interval(interval),
      m_delay(delay)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) == 0) {
        m_nRead = ends[0]; // inherited
        m_nWrite = ends[1];
        fcntl(m_nWrite, F_SETFD, FD_CLOEXEC);
        fcntl(m_nWrite, F_SETPIPE_SZ, kPipeBytes);
    }
}

PacedFile::~PacedFile()
{
    close(m_nRead);
    if (m_writer.joinable()) {
        m_writer.join();
    } else {
        close(m_nWrite);
    }
}

QString PacedFile::Name() const
{
    return "/dev/fd/" + QString::number(m_nRead);
}

void PacedFile::Start(Clock::time_point start)
{
    close(std::exchange(m_nRead, -1));
    m_writer = std::thread([this, start] { Write(start); });
}

void PacedFile::Write(Clock::time_point start) const
{
    QFile file(m_file);
    bool good = file.open(QIODevice::ReadOnly);
    for (int i = 0; good && !file.atEnd(); ++i) {
        const QByteArray piece = file.read(m_nPieceBytes);
        std::this_thread::sleep_until(start +
                                      std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(m_delay + i * m_interval)));
        good = WriteAll(m_nWrite, piece);
    }
    close(m_nWrite);
}
