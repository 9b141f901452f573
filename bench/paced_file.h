// A file that is written to a pipe piece by piece, as if it were being captured.
#pragma once

#include <QString>

#include <chrono>
#include <thread>

class PacedFile
{
public:
    using Clock = std::chrono::steady_clock;

    // `pieceBytes` every `interval` seconds, the first one `delay` seconds after Start().
    PacedFile(QString file, qint64 pieceBytes, double interval, double delay);
    PacedFile(const PacedFile&) = delete;
    PacedFile& operator=(const PacedFile&) = delete;
    ~PacedFile(); // when all is written or nobody reads any more

    // For a program that is started before Start() is called.
    QString Name() const;
    void Start(Clock::time_point start);

private:
    void Write(Clock::time_point start) const;

    QString m_file;
    qint64 m_nPieceBytes;
    double m_interval;
    double m_delay;
    int m_nRead = -1;
    int m_nWrite = -1;
    std::thread m_writer;
};
