#pragma once

#include <memory>
#include <string>

namespace VX_UTL {

// The one line at a terminal that says what runs. While it is up, what
// zelno and its libraries write to the terminal is passed on behind its
// erasure, so that it leaves nothing in the scrollback, and typed keys are
// not echoed (the line editor shows them when it reads them); where that
// can't be done, the line is erased before zelno's own output only. Main
// thread only; `end` before anything else is read or written.
class uStatusLine {
  public:
    uStatusLine();
    ~uStatusLine();
    uStatusLine(const uStatusLine&) = delete;
    uStatusLine& operator=(const uStatusLine&) = delete;

    // Puts up `text`, one line narrower than the terminal, in place of the
    // one shown; skipped while output has left a line unfinished.
    void show(const std::string& text);
    // Takes the line off the screen.
    void hide();
    // Takes it off and gives the terminal back as it was.
    void end();

  private:
    struct platform_state;
    std::unique_ptr<platform_state> state;
};

}  // namespace VX_UTL
