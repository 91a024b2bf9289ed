#pragma once
// What the windows ask of the link: send a message, switch the baud rate between a
// direct KDX and a Q-Vane, and take a recording to play back.
#include "link/frame.h"

#include <string>

namespace kdx {

class LinkControl {
public:
    virtual ~LinkControl() = default;
    // Sends the first msg[0] elements of the buffer as one frame.
    virtual void SendMessage(const OutMsgBuffer& msg) = 0;
    virtual void SetBaudForKDX() = 0;
    virtual void SetBaudForQVane() = 0;
    // The recorded byte stream the playback reads.
    virtual void SetInputFilename(const std::string& name) = 0;
};

// The restart of the module into its bootloader (the About window's button).
class BootloaderRestart {
public:
    virtual ~BootloaderRestart() = default;
    virtual void RestartIntoBootloader() = 0;
};

} // namespace kdx
