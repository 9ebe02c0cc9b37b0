#include <histedit.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "utilities/uterminal.h"

namespace VX_UTL {

namespace {

constexpr int history_size = 1000;

// Makes each folder of an absolute path that doesn't exist yet.
bool make_folders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string folder = path.substr(0, slash);
        if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
            return false;
        }
        if (slash == std::string::npos) {
            return true;
        }
    }
}

}  // namespace

bool uTerminal::is_interactive() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

int32_t uTerminal::width() {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool uTerminal::input_waiting() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, 0) == 1 && (input.revents & POLLIN) != 0;
}

std::string uTerminal::history_file() {
    // A relative XDG_STATE_HOME is to be ignored, as an unset one.
    std::string folder;
    const char* state_home = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    if (state_home != nullptr && state_home[0] == '/') {
        folder = state_home;
    } else if (home != nullptr && home[0] == '/') {
        folder = std::string(home) + "/.local/state";
    } else {
        return {};
    }
    folder += "/zelno";
    return make_folders(folder) ? folder + "/history" : std::string();
}

// Reached from libedit's key functions through the client data.
struct uLineEditor::platform_state {
    static platform_state& of(EditLine* editor);
    static char* prompt(EditLine* editor) { return of(editor).prompt_text.data(); }
    static unsigned char clear_line(EditLine* editor, int key);
    static unsigned char complete(EditLine* editor, int key);

    EditLine* editor = nullptr;
    History* history = nullptr;
    std::string history_file;
    std::string prompt_text;
    completer completer_function = nullptr;
};

uLineEditor::platform_state& uLineEditor::platform_state::of(EditLine* editor) {
    void* data = nullptr;
    el_get(editor, EL_CLIENTDATA, &data);
    return *static_cast<platform_state*>(data);
}

unsigned char uLineEditor::platform_state::clear_line(EditLine* editor, int) {
    const LineInfo* line = el_line(editor);
    el_cursor(editor, static_cast<int>(line->lastchar - line->cursor));
    el_deletestr(editor, static_cast<int>(line->lastchar - line->buffer));
    return CC_REDISPLAY;
}

unsigned char uLineEditor::platform_state::complete(EditLine* editor, int) {
    const LineInfo* line = el_line(editor);
    const std::string before(line->buffer, line->cursor);
    const completion found = of(editor).completer_function(before);
    if (found.words.empty()) {
        return CC_REFRESH_BEEP;
    }
    const std::size_t typed = before.size() - found.word_start;
    std::string common = found.words.front();
    for (const std::string& word : found.words) {
        const auto differ = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
        common.erase(differ.first, common.end());
    }
    if (common.size() > typed) {
        el_insertstr(editor, common.c_str() + typed);
        return CC_REFRESH;
    }
    if (found.words.size() == 1) {
        return CC_REFRESH;
    }
    // Nothing more in common: the choices go below the line, which is then
    // drawn again.
    std::FILE* out = nullptr;
    el_get(editor, EL_GETFP, 1, &out);
    std::fputc('\n', out);
    for (const std::string& word : found.words) {
        const std::size_t shown = word.back() == ' ' ? word.size() - 1 : word.size();
        std::fprintf(out, "%.*s  ", static_cast<int>(shown), word.c_str());
    }
    std::fputc('\n', out);
    return CC_REDISPLAY;
}

uLineEditor::uLineEditor(std::string history_file, completer complete)
    : state(std::make_unique<platform_state>()) {
    state->history_file = std::move(history_file);
    state->completer_function = complete;
    HistEvent event{};
    state->history = history_init();
    history(state->history, &event, H_SETSIZE, history_size);
    history(state->history, &event, H_SETUNIQUE, 1);
    if (!state->history_file.empty()) {
        history(state->history, &event, H_LOAD, state->history_file.c_str());
    }

    EditLine* editor = el_init("zelno", stdin, stdout, stderr);
    state->editor = editor;
    el_set(editor, EL_CLIENTDATA, state.get());
    el_set(editor, EL_EDITOR, "emacs");
    el_set(editor, EL_PROMPT, &platform_state::prompt);
    el_set(editor, EL_HIST, history, state->history);
    // While a line is edited Ctrl+C is a key, so no signal reaches the
    // queue for nothing; after the line the terminal gets its signals back.
    el_set(editor, EL_SETTY, "-d", "-isig", nullptr);
    // The wide calls keep the literals; the narrow ones copy the names and
    // never free the copies.
    el_wset(editor, EL_ADDFN, L"zelno-clear-line", L"Clear the line", &platform_state::clear_line);
    el_wset(editor, EL_BIND, L"^C", L"zelno-clear-line", nullptr);
    el_wset(editor, EL_ADDFN, L"zelno-complete", L"Complete the word", &platform_state::complete);
    el_wset(editor, EL_BIND, L"^I", L"zelno-complete", nullptr);
}

uLineEditor::~uLineEditor() {
    el_end(state->editor);
    history_end(state->history);
}

bool uLineEditor::read(const char* prompt, std::string& line) {
    state->prompt_text = prompt;
    el_resize(state->editor);
    int count = 0;
    const char* text = el_gets(state->editor, &count);
    if (text == nullptr || count <= 0) {
        return false;
    }
    line.assign(text, static_cast<std::size_t>(count));
    if (line.find_first_not_of(" \t\r\n") != std::string::npos) {
        HistEvent event{};
        history(state->history, &event, H_ENTER, text);
        // Saved at once, so a session that ends badly keeps its lines.
        if (!state->history_file.empty()) {
            history(state->history, &event, H_SAVE, state->history_file.c_str());
        }
    }
    return true;
}

}  // namespace VX_UTL
