#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace VX_UTL {

// What zelno needs to know of the terminal it runs at. Never throws.
class uTerminal {
  public:
    // Standard input and standard output are both terminals.
    static bool is_interactive();
    // Columns of the terminal on standard output; 0 if not known.
    static int32_t width();
    // Standard input holds something to read now; doesn't wait or read.
    static bool input_waiting();
    // The file of the line history, its folder created as needed; empty
    // if there is no place for it.
    static std::string history_file();
};

// The words that may stand for the word being typed, which begins at
// `word_start` of the text before the cursor; each is whole and ends with
// what follows it (a space, or a slash after a folder).
struct completion {
    std::size_t word_start = 0;
    std::vector<std::string> words;
};

// Reads lines at a terminal with editing, a history kept in a file and Tab
// completion. Main thread only. Ctrl+C while a line is edited is a key, not
// a signal: it clears the line and prompts afresh.
class uLineEditor {
  public:
    using completer = completion (*)(const std::string& before_cursor);

    // An empty `history_file` keeps the history for this run only.
    uLineEditor(std::string history_file, completer complete);
    ~uLineEditor();
    uLineEditor(const uLineEditor&) = delete;
    uLineEditor& operator=(const uLineEditor&) = delete;

    // `line` gets the text with its line feed. False at the end: Ctrl+D on
    // an empty line, end of input or a read error.
    bool read(const char* prompt, std::string& line);

  private:
    struct platform_state;
    std::unique_ptr<platform_state> state;
};

}  // namespace VX_UTL
