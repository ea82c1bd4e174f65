#pragma once

#include <string>

namespace stowhaven {

// What an archive from storage or a file handed in really is, decided as tar decides it
// when it unpacks one: a valid tar header first makes a plain archive, whatever its first
// bytes spell; otherwise the whole stream header of bzip2. Anything else is refused, so a
// plain archive that merely starts with "BZh" is never taken for a compressed one.
enum class ArchiveKind { PlainTar, Bzip2, Unknown };

ArchiveKind archiveKindOf(const std::string& path);

}  // namespace stowhaven
