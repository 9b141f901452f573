#pragma once

namespace tool {

// Makes this process, if it is root, one of the user whose session this is: the owner of the
// runtime directory. The desktop's portal talks to no other. For a child that does nothing else.
// Returns false if that is not possible.
bool BecomeSessionUser();

} // namespace tool
