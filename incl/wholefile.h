// Floor 0.6 - ground: files that take the place of an older one only when they are whole
//
// A file is written beside its final name, as NAME.PID.new (NAME.PID.1.new where that is taken, and so on),
// and gets that name when its last byte is on its way to the disk: a full disk, a failed write or a killed
// process leaves the older file, or none, and never a piece of the new one. Two processes that write the same
// file do not mix their bytes; the last one stays. (On Windows a file that another program has open is waited
// for, see korplatform.h.)
//
// Where renaming another file over it would not be the same as writing it (a device, a link, a file that is
// write-protected), or no file can be made beside it (a protected folder, a name too long for the addition,
// ten names taken by what killed processes left), the file is written in place. A file that takes the place
// of an older one takes over its owner, group, access rights and access list.
#pragma once

#include <cstdio>
#include <string>

namespace kor {

struct WholeFile {
    std::FILE* file = nullptr;
    std::string name;   // as the caller spelt it
    std::string beside; // what is written until it is whole; empty when it is written in place
};

/// Opens a file that is to become `name`; mode "w" or "wb". False with errno when it cannot be opened: EINVAL
/// where no file can have the name (platform_takes_name, of what stands behind folders and drive).
bool open_whole_file(const char* name, const char* mode, WholeFile& out);
/// Closes the file and gives it its name. False with errno when a write, the close or the renaming failed:
/// the file beside is then gone (a file written in place stays as far as it went).
bool keep_whole_file(WholeFile& out);
/// Closes the file and forgets what was written beside its name; errno is kept.
void drop_whole_file(WholeFile& out);

} // namespace kor
