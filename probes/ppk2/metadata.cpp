#include "ppk2/metadata.h"

#include <charconv>
#include <cmath>

namespace probes::ppk2 {
namespace {

// A reply is a few hundred bytes; a stream of this much without its end is
// something else.
constexpr size_t longest_reply = 4096;

bool text_byte(char c) {
    return (c >= ' ' && c <= '~') || c == '\t' || c == '\r';
}

bool key_byte(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) {
        s.remove_prefix(1);
    }
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) {
        s.remove_suffix(1);
    }
    return s;
}

// A finite number, or nothing: "-nan" and the like keep the default.
std::optional<double> number(std::string_view text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

// "GS3" sets gs[3]; false when the key is not a per-range value.
bool set_per_range(calibration& cal, std::string_view key, std::string_view value) {
    struct table {
        std::string_view prefix;
        std::array<double, range_count> calibration::*field;
    };
    static constexpr table fields[] = {{"R", &calibration::r},   {"GS", &calibration::gs},
                                       {"GI", &calibration::gi}, {"O", &calibration::o},
                                       {"S", &calibration::s},   {"I", &calibration::i},
                                       {"UG", &calibration::ug}};
    if (key.size() < 2 || key.back() < '0' || key.back() >= '0' + range_count) {
        return false;
    }
    const int r = key.back() - '0';
    key.remove_suffix(1);
    for (const auto& f : fields) {
        if (key == f.prefix) {
            const auto v = number(value);
            // A shunt of 0 ohms is what some uncalibrated devices report.
            if (v && !(f.field == &calibration::r && *v == 0)) {
                (cal.*f.field)[r] = *v;
            }
            return true;
        }
    }
    return false;
}

void take(metadata& m, std::string_view key, std::string_view value) {
    if (set_per_range(m.cal, key, value)) {
        return;
    }
    if (key == "Calibrated") {
        m.calibrated = number(value).value_or(0) != 0;
    } else if (key == "VDD") {
        if (const auto v = number(value)) {
            m.vdd_mv = static_cast<int32_t>(std::lround(*v));
        }
    } else if (key == "HW") {
        m.hw = value;
    } else if (key == "mode") {
        m.mode = value;
    } else if (key == "IA") {
        m.ia = value;
    }
}

}  // namespace

metadata_reply parse_metadata(std::string_view bytes) {
    metadata_reply reply;
    size_t start = 0;
    while (start < bytes.size()) {
        const size_t end = bytes.find('\n', start);
        std::string_view line =
            bytes.substr(start, end == std::string_view::npos ? end : end - start);
        for (char c : line) {
            if (!text_byte(c)) {
                return {reply_state::garbled, {}};
            }
        }
        if (end == std::string_view::npos) {
            break;  // A line still arriving.
        }
        start = end + 1;
        line = trimmed(line);
        if (line == "END") {
            reply.state = reply_state::complete;
            return reply;
        }
        if (line.empty()) {
            continue;
        }
        const size_t colon = line.find(':');
        if (colon == 0 || colon == std::string_view::npos) {
            return {reply_state::garbled, {}};
        }
        const std::string_view key = line.substr(0, colon);
        for (char c : key) {
            if (!key_byte(c)) {
                return {reply_state::garbled, {}};
            }
        }
        take(reply.data, key, trimmed(line.substr(colon + 1)));
    }
    return {bytes.size() > longest_reply ? reply_state::garbled : reply_state::incomplete, {}};
}

}  // namespace probes::ppk2
