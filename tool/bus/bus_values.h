#pragma once

#include "tool/bus/bus_library.h"
#include "tool/system/descriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace tool {

// The values in a message that somebody has sent, or in a container inside it, one after another.
// What is not there, or is of another type, is read as nothing.
class BusValues
{
public:
    explicit BusValues(DBusMessage* message);

    // Whether there is a value here.
    bool IsThere() const;
    void Next();

    std::optional<std::string> Text() const;
    std::optional<std::string> Path() const;
    std::optional<uint32_t> Number() const;      // uint32
    std::optional<int32_t> SignedNumber() const; // int32
    // A descriptor of ours. Not open if there is none.
    Descriptor OpenFile() const;

    // The values of the array, structure, variant or dictionary entry.
    BusValues Inside() const;

private:
    BusValues() = default;
    int Type() const;

    // The library's functions take iterators that are not constant, even those that only look.
    mutable DBusMessageIter m_place{};
    bool m_bThere = false;
};

// Calls use(name, value) for each entry of a dictionary of named values.
template <typename Use>
void ForEachOption(const BusValues& dictionary, const Use& use)
{
    for (BusValues entries = dictionary.Inside(); entries.IsThere(); entries.Next()) {
        BusValues entry = entries.Inside();
        const auto name = entry.Text();
        entry.Next();
        if (name && entry.IsThere()) {
            use(*name, entry.Inside());
        }
    }
}

} // namespace tool
