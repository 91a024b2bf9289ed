#pragma once
// Moving the memory image to and from the module: the request and write messages
// (direct, or relayed by a Q-Vane to the KDX of one axis) and the copy of an incoming
// memory-contents message into the image.
#include "config/memory_image.h"
#include "link/frame.h"

#include <cstdint>
#include <string_view>

namespace kdx {

// MemReqtb captions. The leading blank of " Timed out" is kept.
namespace memreq {
inline constexpr std::string_view Reading = "Reading ...";
inline constexpr std::string_view Writing = "Writing ...";
inline constexpr std::string_view Ok = "OK";
inline constexpr std::string_view TimedOut = " Timed out";
inline constexpr std::string_view WriteToApply = "Write to Apply";
inline constexpr int TimeoutMs = 1000; // MemReqTimer, one-shot, restarted by every request
} // namespace memreq

// ConfirmReadOverChanges: Yes/No with the exclamation icon (style 52).
inline constexpr std::string_view kConfirmReadPrompt =
    "The current data has been modified but not written. Continue with read ?";
inline constexpr std::string_view kConfirmReadTitle = "Data Modified";

// Axes a Q-Vane relays to: 0 Tilt, 1 Roll, 2 Pan.
inline constexpr int kAxisCount = 3;

// Read request into `out`: direct 3, 112, 115; relayed 4, 130, 128 + axis, checksum.
void buildReadRequest(OutMsgBuffer& out, bool targetIsQVane, int axis);

// Write message into `out`: direct 63, 113, image elements 0 .. 59, checksum; relayed
// 34, 130, 131 + axis, image elements 0 .. 29, checksum. The image's own checksum
// element is not sent. Elements go as they are; only their low bytes travel.
void buildWriteMessage(OutMsgBuffer& out, const MemoryImage& image, bool targetIsQVane, int axis);

// Axis selection on a Q-Vane (sent without relay marker): 3, 131 + axis, 134 + axis.
void buildAxisSelect(OutMsgBuffer& out, int axis);

// The identifier of the memory-contents reply to expect: 120 direct, 136 + axis relayed.
int memoryReplyId(bool targetIsQVane, int axis);

// Copies an incoming 120 message into image elements 0 .. 59 (from msg(2) .. msg(61)).
// A short message raises the subscript error; elements copied before it keep their
// new values.
void PutMemoryMsg(MemoryImage& image, const MsgView& msg);

struct FirmwareVersion {
    int16_t low = 0;
    int16_t high = 0;
};

// Copies an incoming 136 + axis message into image elements 0 .. 29 (from msg(2) ..
// msg(31)) and returns the firmware version bytes msg(32), msg(33). Elements 30 .. 59
// stay as they are. A short message raises the subscript error as above.
FirmwareVersion PutAxisMemoryMsg(MemoryImage& image, const MsgView& msg);

} // namespace kdx
