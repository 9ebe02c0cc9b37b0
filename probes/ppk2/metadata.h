#pragma once

// The reply to GetMetadata: lines "KEY: value" up to "END". Whatever the
// device leaves out or reports as not a number keeps its default, so an
// uncalibrated PPK2 still measures.

#include <optional>
#include <string>
#include <string_view>

#include "ppk2/word.h"

namespace probes::ppk2 {

struct metadata {
    calibration cal;
    bool calibrated = false;
    std::optional<int32_t> vdd_mv;  // The regulator's setting as the device reports it.
    std::string hw, mode, ia;       // Kept as text: only shown, never computed with.
};

enum class reply_state {
    incomplete,  // Well formed so far; more bytes are due.
    complete,
    garbled,  // Not a metadata reply: stale samples, noise, another device.
};

struct metadata_reply {
    reply_state state = reply_state::incomplete;
    metadata data;  // When complete.
};

// `bytes` is everything read since the request. Unknown keys are ignored,
// so that newer firmware's additions do no harm.
metadata_reply parse_metadata(std::string_view bytes);

}  // namespace probes::ppk2
