// A reply of the X server, which the caller has to free.
#pragma once

#include <cstdlib>
#include <memory>

namespace tool {

struct FreeReply
{
    void operator()(void* reply) const { std::free(reply); } // NOLINT(*-no-malloc)
};

template <typename Reply>
using Owned = std::unique_ptr<Reply, FreeReply>;

} // namespace tool
