#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
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
    // The file of the line history, or empty if there is no place for it.
    // Only folders below an existing state or home folder are created.
    static std::string history_file();
};

// What a history file holds: its last `limit` lines, oldest first, without
// line feeds or blank lines; `rewrite` when the file should be written anew
// (grown past twice the limit, or in the escaped form of older zelno).
struct history_text {
    std::vector<std::string> lines;
    bool rewrite = false;
};
history_text parse_history(std::string_view text, std::size_t limit);

// The words that may stand for the word being typed, which begins at
// `word_start` of the text before the cursor; each is whole and ends with
// what follows it (a space, or a slash after a folder). A word may be the
// typed one quoted, and then replaces it.
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
    // What went wrong with the history file since the last call, once:
    // empty, or a line for the user. The history then lasts for this run.
    std::string take_problem();

  private:
    struct platform_state;
    std::unique_ptr<platform_state> state;
};

}  // namespace VX_UTL
