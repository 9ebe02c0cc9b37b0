#include <fcntl.h>
#include <histedit.h>
#include <locale.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "utilities/udescriptor_posix.h"
#include "utilities/uterminal.h"

namespace VX_UTL {

namespace {

constexpr int history_size = 1000;

// More than a history file of 2000 lines of 1023 bytes; a larger file is
// read from its end only.
constexpr off_t history_read_limit = 4 << 20;

// Makes the folders of `below` (relative, '/'-separated) inside `base`,
// which must be an existing folder: nothing is made above it.
bool make_folders(const std::string& base, const std::string& below) {
    struct stat info {};
    if (stat(base.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        return false;
    }
    for (std::size_t slash = below.find('/');; slash = below.find('/', slash + 1)) {
        const std::string folder = base + '/' + below.substr(0, slash);
        if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
            return false;
        }
        if (slash == std::string::npos) {
            return true;
        }
    }
}

// Opens a regular file without ever waiting: a FIFO or a device named as the
// history file must not hold zelno up. -1 with errno set otherwise.
int open_regular(const std::string& path, int flags) {
    const int file = open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0600);
    if (file < 0) {
        return -1;
    }
    struct stat info {};
    if (fstat(file, &info) != 0 || !S_ISREG(info.st_mode)) {
        close(file);
        errno = EINVAL;
        return -1;
    }
    return file;
}

std::string read_tail(int file, bool& cut) {
    struct stat info {};
    cut = fstat(file, &info) == 0 && info.st_size > history_read_limit;
    if (cut) {
        lseek(file, info.st_size - history_read_limit, SEEK_SET);
    }
    std::string text;
    char buffer[65536];
    for (;;) {
        const ssize_t count = read_some(file, buffer, sizeof buffer);
        if (count <= 0) {
            break;
        }
        text.append(buffer, static_cast<std::size_t>(count));
        if (text.size() > static_cast<std::size_t>(history_read_limit)) {
            break;  // Grew meanwhile; what is here will do.
        }
    }
    if (cut) {
        text.erase(0, std::min(text.find('\n'), text.size()));  // A partial line.
    }
    return text;
}

// Replaces the file at `path` by one of `lines` in one rename, so that a
// session reading it at the same time finds the old file or the new one.
bool replace_history(const std::string& path, const std::vector<std::string>& lines) {
    std::string temporary = path + ".XXXXXX";
    const int file = mkstemp(temporary.data());
    if (file < 0) {
        return false;
    }
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    const bool written = write_all(file, text);
    if (close(file) != 0 || !written || rename(temporary.c_str(), path.c_str()) != 0) {
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

// Opens the history file for appending and locks it, sure that it is still
// the file at `path`: a session that trims it renames a new one there.
int open_locked_for_append(const std::string& path) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        const int file = open_regular(path, O_WRONLY | O_APPEND | O_CREAT);
        if (file < 0) {
            return -1;
        }
        struct stat opened {
        }, named{};
        if (flock(file, LOCK_EX) == 0 && fstat(file, &opened) == 0 &&
            stat(path.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
            opened.st_dev == named.st_dev) {
            return file;
        }
        close(file);
    }
    return -1;
}

std::string history_problem(const std::string& path, int error) {
    return "History file " + path + ": " +
           (error == EINVAL ? std::string("not a regular file") : std::strerror(error)) +
           "; the history is kept for this session only";
}

// Puts a locale in force on this thread for the life of the object.
class locale_scope {
  public:
    explicit locale_scope(locale_t locale)
        : previous(locale == static_cast<locale_t>(0) ? locale : uselocale(locale)) {}
    ~locale_scope() {
        if (previous != static_cast<locale_t>(0)) {
            uselocale(previous);
        }
    }
    locale_scope(const locale_scope&) = delete;
    locale_scope& operator=(const locale_scope&) = delete;

  private:
    locale_t previous;
};

}  // namespace

bool uTerminal::is_interactive() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

int32_t uTerminal::width() {
    // While the status line is up, standard output is its pipe; standard
    // input is the same terminal then.
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ||
                   ioctl(STDIN_FILENO, TIOCGWINSZ, &size) == 0
               ? size.ws_col
               : 0;
}

bool uTerminal::input_waiting() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, 0) == 1 && (input.revents & POLLIN) != 0;
}

std::string uTerminal::history_file() {
    // A relative XDG_STATE_HOME is to be ignored, as an unset one. A home
    // that doesn't exist means no history, not a tree of new folders.
    const char* state_home = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    std::string base;
    std::string below;
    if (state_home != nullptr && state_home[0] == '/') {
        base = state_home;
        below = "zelno";
    } else if (home != nullptr && home[0] == '/') {
        base = home;
        below = ".local/state/zelno";
    } else {
        return {};
    }
    return make_folders(base, below) ? base + '/' + below + "/history" : std::string();
}

// Reached from libedit's key functions through the client data.
struct uLineEditor::platform_state {
    static platform_state& of(EditLine* editor);
    static char* prompt(EditLine* editor) { return of(editor).prompt_text.data(); }
    static unsigned char clear_line(EditLine* editor, int key);
    static unsigned char complete(EditLine* editor, int key);

    void load_history();
    void append_history(std::string_view line);
    void give_up_history(int error);

    EditLine* editor = nullptr;
    History* history = nullptr;
    std::string history_file;  // Empty once the file failed: no more tries.
    std::string problem;       // Not yet taken by the shell.
    std::string last_line;     // As typed, with its line feed.
    std::string prompt_text;
    completer completer_function = nullptr;
    // The user's character type alone, so that libedit takes and shows
    // what isn't ASCII; in force on the main thread while a line is edited.
    locale_t ctype = static_cast<locale_t>(0);
};

void uLineEditor::platform_state::give_up_history(int error) {
    problem = history_problem(history_file, error);
    history_file.clear();
}

void uLineEditor::platform_state::load_history() {
    const int file = open_regular(history_file, O_RDONLY);
    if (file < 0) {
        if (errno != ENOENT) {
            give_up_history(errno);
        }
        return;
    }
    // Locked, so that no session appends between the read and a rewrite.
    flock(file, LOCK_EX);
    bool cut = false;
    const history_text found = parse_history(read_tail(file, cut), history_size);
    if (found.rewrite || cut) {
        replace_history(history_file, found.lines);
    }
    close(file);
    HistEvent event{};
    for (const std::string& line : found.lines) {
        last_line = line + '\n';
        ::history(this->history, &event, H_ENTER, last_line.c_str());
    }
}

// One write of one line to the file's end: the lines of sessions that run
// side by side interleave whole, and none overwrites another's.
void uLineEditor::platform_state::append_history(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.remove_suffix(1);
    }
    const int file = open_locked_for_append(history_file);
    if (file < 0) {
        give_up_history(errno);
        return;
    }
    const bool written = write_all(file, std::string(line) + '\n');
    const int error = errno;
    close(file);
    if (!written) {
        give_up_history(error);
    }
}

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
    const std::string typed = before.substr(std::min(found.word_start, before.size()));
    std::string common = found.words.front();
    for (const std::string& word : found.words) {
        const auto differ = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
        common.erase(differ.first, common.end());
    }
    if (common.size() > typed.size()) {
        // A word that gained a quote is replaced whole.
        if (!common.starts_with(typed)) {
            el_deletestr(editor, static_cast<int>(typed.size()));
            el_insertstr(editor, common.c_str());
        } else {
            el_insertstr(editor, common.c_str() + typed.size());
        }
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
        state->load_history();
    }

    // A locale that can't be had leaves the C locale: ASCII only.
    state->ctype = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(0));
    const locale_scope in_ctype(state->ctype);
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
    {
        const locale_scope in_ctype(state->ctype);
        el_end(state->editor);
    }
    history_end(state->history);
    if (state->ctype != static_cast<locale_t>(0)) {
        freelocale(state->ctype);
    }
}

std::string uLineEditor::take_problem() {
    return std::exchange(state->problem, {});
}

bool uLineEditor::read(const char* prompt, std::string& line) {
    state->prompt_text = prompt;
    const locale_scope in_ctype(state->ctype);
    el_resize(state->editor);
    int count = 0;
    const char* text = el_gets(state->editor, &count);
    if (text == nullptr || count <= 0) {
        // Ctrl+D leaves the cursor behind the prompt; the user's shell
        // prompt is to start on a line of its own.
        std::fputc('\n', stdout);
        std::fflush(stdout);
        return false;
    }
    line.assign(text, static_cast<std::size_t>(count));
    if (line.find_first_not_of(" \t\r\n") != std::string::npos) {
        HistEvent event{};
        history(state->history, &event, H_ENTER, text);
        // Appended at once, so a session that ends badly keeps its lines;
        // a line equal to the one before is kept once, as in memory.
        if (!state->history_file.empty() && line != state->last_line) {
            state->append_history(line);
        }
        state->last_line = line;
    }
    return true;
}

}  // namespace VX_UTL
