#pragma once

#include <QStringList>

// Movies that tests have made with the same ffmpeg, arguments and inputs. They are in the build
// folder, and any number of tests can use the cache at once.
class MovieCache
{
public:
    // The arguments of an ffmpeg that generates a movie or makes one from the files after -i.
    explicit MovieCache(const QStringList& arguments);

    // Copies the movie to ffmpeg's output path. Returns false if it is not cached.
    bool Fetch() const;
    // Stores the movie ffmpeg has written.
    void Keep() const;

private:
    QString m_output;
    QString m_kept; // empty if the inputs are not known
};
