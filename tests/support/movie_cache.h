#pragma once

#include <QStringList>

// Movies that tests made before with the same ffmpeg, the same arguments and the same inputs. They
// are in the build folder; any number of tests may use it at once.
class MovieCache
{
public:
    // The arguments of an ffmpeg that makes a movie out of nothing or out of the files after -i.
    explicit MovieCache(const QStringList& arguments);

    // Copies the movie to where ffmpeg would have written it. Returns false if there is none.
    bool Fetch() const;
    // Keeps the movie that ffmpeg has written.
    void Keep() const;

private:
    QString m_output;
    QString m_kept; // empty if what the movie is made of is not known
};
