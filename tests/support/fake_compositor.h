// A compositor without a screen, for what real ones do not do on demand. It runs in a thread of its
// own.
#pragma once

#include <QTemporaryDir>

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

struct wl_client;
struct wl_display;
struct wl_global;
struct wl_resource;

// As wl_output and xdg-output tell it.
struct FakeOutput
{
    int x = 0;
    int y = 0;
    int width = 64;
    int height = 48;
    int transform = 0;
};

// What is offered, and how each frame that is asked for is answered.
struct FakeCompositor
{
    // What happens to a frame.
    enum class Answer {
        Copied,       // filled with the colour
        Failed,       // before it is described
        FailedLater,  // when it is to be copied
        Nothing,      // never
        NotDescribed, // ready at once
        DescribedTwice,
        Disconnected,      // instead of a description
        DisconnectedLater, // instead of a picture
    };

    std::vector<FakeOutput> outputs{FakeOutput{}};
    uint32_t screencopyVersion = 3; // 0: none
    bool tellsPlaces = true;        // by xdg-output, else by wl_output

    std::vector<Answer> answers{Answer::Copied}; // the last one stays
    uint32_t format = 1;                         // XRGB8888
    uint32_t width = 64;
    uint32_t height = 48;
    uint32_t stride = 256;
    bool upsideDown = false;
    uint32_t pixel = 0; // for every pixel of the upper half; the lower one is black
};

class RunningCompositor
{
public:
    explicit RunningCompositor(FakeCompositor behaviour = {});
    RunningCompositor(const RunningCompositor&) = delete;
    RunningCompositor& operator=(const RunningCompositor&) = delete;
    ~RunningCompositor();

    std::string Name() const; // as in WAYLAND_DISPLAY

    // Changes how it behaves from now on.
    void Change(const std::function<void(FakeCompositor&)>& change);
    // The picture changes, so that copies which wait for that are made.
    void Damage();
    void RemoveOutputs();
    int FramesAskedFor() const { return m_nFrames; }
    int FramesWithPointer() const { return m_nWithPointer; }
    int CopiesWaiting() const { return m_nWaiting; }

private:
    friend struct FakeRequests;
    void Run();
    void Post(const std::function<void()>& work);
    void Offer();
    void Answer(wl_resource* frame);
    void Describe(wl_resource* frame);
    void Copy(wl_resource* frame, wl_resource* buffer, bool withDamage);
    void Fill(wl_resource* frame, wl_resource* buffer);

    QTemporaryDir m_folder;
    FakeCompositor m_behaviour;
    wl_display* m_pDisplay = nullptr;
    std::vector<wl_global*> m_globals;
    std::list<std::pair<wl_resource*, wl_resource*>> m_waiting; // frames and their buffers
    std::list<wl_resource*> m_used;                             // frames that a copy was asked of
    size_t m_nNextAnswer = 0;
    bool m_bDamaged = true;
    std::atomic<int> m_nFrames = 0;
    std::atomic<int> m_nWithPointer = 0;
    std::atomic<int> m_nWaiting = 0;

    std::mutex m_mutex;
    std::vector<std::function<void()>> m_work;
    std::atomic<bool> m_bStopped = false;
    std::thread m_thread;
};
