#include <iostream>

#include "utilities/ustatus_line.h"

namespace VX_UTL {

// The console shows zelno's output only; what a library prints may still
// land on the line, which the next update draws afresh.
struct uStatusLine::platform_state {
    bool shown = false;
};

uStatusLine::uStatusLine() : state(std::make_unique<platform_state>()) {}

uStatusLine::~uStatusLine() {
    end();
}

void uStatusLine::show(const std::string& text) {
    std::cout << "\r\x1b[J" << text << '\r' << std::flush;
    state->shown = true;
}

void uStatusLine::hide() {
    if (state->shown) {
        std::cout << "\r\x1b[J" << std::flush;
        state->shown = false;
    }
}

void uStatusLine::end() {
    hide();
}

}  // namespace VX_UTL
