#pragma once

/// If the program runs as root, gives a file or folder owned by root to the owner and group of its
/// parent folder, so that what is created in a user's folder belongs to the user. Does not change
/// symbolic links or files with several links. Does nothing for other users.
void GiveToFolderOwner(const char* path);

/// Whether it does anything: the program runs as root.
bool MustGiveFiles();
