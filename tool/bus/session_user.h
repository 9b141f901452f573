#pragma once

namespace tool {

// The user whose session this is, where that is another one than root, whom the recorder runs as
// after pkexec: the owner of the runtime directory. The desktop's services and its bus talk to no
// other. Both do nothing for other users, and return false if they fail.

// Makes this process one of that user. For a child that does nothing else.
bool BecomeSessionUser();

// Lets the calling thread, but no other, act as that user from now on.
bool ActAsSessionUser();

} // namespace tool
