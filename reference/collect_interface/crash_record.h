// Writes crash notes to crashes.txt in the data directory, one line each, from inside a crash handler.
//
// Threads: SetCrashDirectory from any thread, RecordCrash from a crashed one while the others run on.
// Ownership: directories that were set once are kept for good, since a crashing thread may be reading one.
#ifndef REFERENCE_COLLECT_INTERFACE_CRASH_RECORD_H
#define REFERENCE_COLLECT_INTERFACE_CRASH_RECORD_H

#include <filesystem>

namespace collect_interface {

// Remembers where the notes go; makes nothing.
void SetCrashDirectory(const std::filesystem::path& directory);

// Makes the directory when it is missing and appends text. Async-signal-safe: no allocation, no lock. Does nothing when
// no directory was set or text is null.
void RecordCrash(const char* text) noexcept;

using PathCharacter = std::filesystem::path::value_type;

// The operating system's part of RecordCrash. A call for a directory that exists does nothing.
void MakeDirectoryInCrash(const PathCharacter* directory) noexcept;
void AppendLineInCrash(const PathCharacter* file, const char* text) noexcept;

}  // namespace collect_interface

#endif
