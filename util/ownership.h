#pragma once

/// For a program that runs as root: gives a file or folder that root owns to the owner and group of
/// the folder that it lies in, so that what is made in a user's folder is the user's. Neither a
/// symbolic link nor a file with a second name is changed. Any other user changes nothing.
void GiveToFolderOwner(const char* path);
