#pragma once

#include <dlfcn.h>

namespace tool {

// A library that is loaded by name while the program runs.
class SharedLibrary
{
public:
    // Never closed: libraries keep global state.
    explicit SharedLibrary(const char* name) : m_pLibrary(dlopen(name, RTLD_LAZY | RTLD_LOCAL)) {}

    template <typename Function>
    void Find(Function*& function, const char* name)
    {
        function =
            m_pLibrary == nullptr ? nullptr : reinterpret_cast<Function*>(dlsym(m_pLibrary, name));
        m_bComplete = m_bComplete && function != nullptr;
    }
    // Whether it was loaded and has all functions looked for.
    bool IsComplete() const { return m_bComplete; }

private:
    void* m_pLibrary;
    bool m_bComplete = true;
};

} // namespace tool
