#pragma once

#include <memory>

namespace stowhaven {

class ArchivableFolder;
class TerminalFlow;

// The items of one folder whose contents are chosen one by one, on the terminal.
void showFolderContents(TerminalFlow& flow, const std::shared_ptr<ArchivableFolder>& folder);
// The photo and video albums, each side chosen apart, on the terminal.
void showAlbumsScreen(TerminalFlow& flow);

}  // namespace stowhaven
