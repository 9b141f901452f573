#include "tool/edit/movie_question.h"

#include "tool/edit/console.h"
#include "tool/edit/job.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/system/keyboard.h"

#include <chrono>
#include <poll.h>
#include <unistd.h>

namespace tool {
namespace {

class Listener
{
public:
    // Returns false once "q" was typed.
    bool GoesOn()
    {
        if (m_console.IsTooQuiet(std::chrono::steady_clock::now())) {
            m_console.Say("tool: reading the movies.\n");
        }
        pollfd keys{m_keyboard.Number(), POLLIN, 0};
        if (poll(&keys, 1, 0) > 0) {
            m_keyboard.Read();
        }
        return !m_keyboard.IsQuitTyped();
    }

    bool IsCancelled() const { return m_keyboard.IsQuitTyped(); }

private:
    Console m_console;
    Keyboard m_keyboard{STDIN_FILENO};
};

} // namespace

std::optional<std::string> AskAboutMovies(const std::string& ffmpeg,
                                          const std::vector<std::string>& urls,
                                          const std::vector<int>& inherited)
{
    Arguments arguments = {"-hide_banner"};
    for (const std::string& url : urls) {
        arguments.insert(arguments.end(), {"-i", url});
    }
    Listener listener;
    const std::string answer =
        Ask(ffmpeg, arguments, {.patience = TimeLeft(), .inherited = inherited, .goesOn = [&] {
                                    return listener.GoesOn();
                                }});
    return listener.IsCancelled() ? std::nullopt : std::optional(answer);
}

} // namespace tool
