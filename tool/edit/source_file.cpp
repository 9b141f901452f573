#include "tool/edit/source_file.h"

#include "tool/mp4/fragments.h"
#include "tool/mp4/frugal_file.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>

namespace tool {

std::string SourceFile::Url() const
{
    return size == identity.size ? "file:" + Path()
                                 : "subfile,,start,0,end," + std::to_string(size) + ",,:" + Path();
}

std::optional<SourceFile> OpenSource(const std::string& path)
{
    SourceFile source;
    // Opening a pipe must not wait for a writer.
    source.file = Descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY));
    if (!source.file.IsOpen()) {
        return std::nullopt;
    }
    const auto identity = IdentityOf(source.file.Number());
    if (!identity) {
        errno = EINVAL;
        return std::nullopt;
    }
    source.identity = *identity;
    constexpr uint64_t allowance = 1U << 22U; // fragment headers of three days
    FrugalFile file(source.Path(), allowance);
    source.size = CompleteSize(file).value_or(identity->size);
    return source;
}

std::string OpenFault(int error)
{
    return error == ENOENT ? "No such file or directory"
                           : "Invalid data: " + std::generic_category().message(error);
}

} // namespace tool
