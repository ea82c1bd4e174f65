#pragma once

namespace stowhaven {

class InAppSettingsViewController;
class TerminalFlow;

// The list of switches under their section titles, numbered across sections: a number
// turns a switch over, sets the battery level in percent, or asks before a reset. True when
// a reset is under way: its alert, on the main queue, ends the program, and nothing may be
// stored before.
bool showSwitchList(TerminalFlow& flow, InAppSettingsViewController& switches);

}  // namespace stowhaven
