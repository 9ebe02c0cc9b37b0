#include "shell/completion.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "shell/commands.h"

namespace {

using word_list = std::vector<std::string_view>;

// What may follow each command; the parsers accept these long names and
// their one-letter forms.
struct command_words {
    std::string_view command;
    word_list options;
    word_list file_options;  // Followed by a file name.
    word_list values;        // Fixed words in place of an option.
};

const command_words vocabulary[] = {
    {"connect", {"--device", "--config", "--help"}, {"-c", "--config"}, {"hosted", "prb"}},
    {"log", {"--cmd", "--help"}, {"-c", "--cmd"}, {}},
    {"wattscope",
     {"--sampfreq", "--output", "--maxoutsize", "--duration", "--format", "--device", "--config",
      "--range", "--trig", "--saveall", "--help"},
     {"-o", "--output", "-c", "--config"},
     {"ws", "ws+"}},
    {"prodtest",
     {"--input", "--device", "--config", "--help"},
     {"-i", "--input", "-c", "--config"},
     {}},
};

const command_words* words_of(std::string_view command) {
    for (const command_words& entry : vocabulary) {
        if (entry.command == command) {
            return &entry;
        }
    }
    return nullptr;
}

void add_matching(const word_list& choices, std::string_view typed, std::vector<std::string>& out) {
    for (const std::string_view choice : choices) {
        if (choice.starts_with(typed)) {
            out.emplace_back(std::string(choice) + ' ');
        }
    }
}

word_list command_names() {
    word_list names;
    for (uint32_t row = 0; row < command_count; ++row) {
        names.emplace_back(command_table[row].name);
    }
    return names;
}

// What the cursor stands in, read as the line splitter will read it: a
// double quote opens a field only at a field's start, and the cut at ';'
// honours it only at a command's start.
struct typed_line {
    bool command_quoted = false;  // The command began with a quote.
    word_list earlier;            // Words of the command before the cursor's.
    std::size_t word_start = 0;   // Of the word under the cursor, at its quote.
    bool word_quoted = false;
    std::string_view typed;  // The word's text, without its quote.
};

typed_line read_typed(std::string_view line) {
    typed_line found;
    std::size_t start = 0;
    for (std::size_t at = 0;;) {
        if (at < line.size() && line[at] == '"') {
            const std::size_t close = line.find('"', at + 1);
            if (close == std::string_view::npos) {
                start = at + 1;
                found.command_quoted = true;
                break;
            }
            at = close + 1;
            continue;
        }
        const std::size_t separator = line.find(';', at);
        if (separator == std::string_view::npos) {
            start = at;
            break;
        }
        at = separator + 1;
    }
    for (std::size_t at = start;;) {
        if (at < line.size() && line[at] == '"') {
            const std::size_t close = line.find('"', at + 1);
            if (close == std::string_view::npos) {
                found.word_start = at;
                found.word_quoted = true;
                found.typed = line.substr(at + 1);
                return found;
            }
            if (close > at + 1) {
                found.earlier.push_back(line.substr(at + 1, close - at - 1));
            }
            at = close + 1;
            continue;
        }
        const std::size_t blank = line.find(' ', at);
        if (blank == std::string_view::npos) {
            found.word_start = at;
            found.typed = line.substr(at);
            return found;
        }
        if (blank > at) {
            found.earlier.push_back(line.substr(at, blank - at));
        }
        at = blank + 1;
    }
}

// Files and folders in the folder part of the word that begin with the rest;
// hidden ones only when asked for with a leading dot. A name with a blank
// is quoted, and then all are, so that they share what was typed. Names the
// line splitter can't be given whole are left out: a ';' cuts the line
// wherever a file name stands, a quoted field can't hold '"', a plain one
// can't begin with it, and a quote can't stand inside a quoted command.
void add_files(const typed_line& line, std::vector<std::string>& out) {
    const std::string_view typed = line.typed;
    const std::size_t slash = typed.rfind('/');
    const std::string folder(slash == std::string_view::npos ? "" : typed.substr(0, slash + 1));
    const std::string_view prefix = typed.substr(folder.size());
    std::vector<std::pair<std::string, bool>> found;  // Path, is a folder.
    // Advanced with error codes: an exception must not cross the line
    // editor's C frames, and a folder may vanish or deny us midway.
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder.empty() ? "." : folder, error), end;
         !error && it != end; it.increment(error)) {
        const std::filesystem::directory_entry& entry = *it;
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(prefix) || (name[0] == '.' && !prefix.starts_with('.'))) {
            continue;
        }
        std::error_code kind_error;
        found.emplace_back(folder + name, entry.is_directory(kind_error));
    }
    const auto cuts_line = [&](const std::string& path) {
        return !line.command_quoted && path.find(';') != std::string::npos;
    };
    bool quoted = line.word_quoted;
    for (const auto& [path, is_folder] : found) {
        quoted = quoted ||
                 (!line.command_quoted && path.find(' ') != std::string::npos && !cuts_line(path));
    }
    for (const auto& [path, is_folder] : found) {
        const bool has_quote = path.find('"') != std::string::npos;
        if (cuts_line(path) || (quoted && (has_quote || line.command_quoted)) ||
            (!quoted && path.starts_with('"')) ||
            (line.command_quoted && path.find(' ') != std::string::npos)) {
            continue;
        }
        // A folder's quote stays open, so that its names can follow.
        out.push_back((quoted ? "\"" : "") + path + (is_folder ? "/" : quoted ? "\" " : " "));
    }
}

}  // namespace

VX_UTL::completion complete_words(const std::string& before_cursor) {
    VX_UTL::completion found;
    const typed_line line = read_typed(before_cursor);
    found.word_start = line.word_start;
    const word_list& earlier = line.earlier;
    if (line.word_quoted && (earlier.empty() || earlier.front() == "help")) {
        return found;  // Command names need no quotes.
    }
    if (earlier.empty() || earlier.front() == "help") {
        add_matching(command_names(), line.typed, found.words);
    } else if (const command_words* words = words_of(earlier.front())) {
        const word_list& files = words->file_options;
        if (std::find(files.begin(), files.end(), earlier.back()) != files.end()) {
            add_files(line, found.words);
        } else if (!line.word_quoted && line.typed.starts_with('-')) {
            add_matching(words->options, line.typed, found.words);
        } else if (!line.word_quoted) {
            add_matching(words->values, line.typed, found.words);
        }
    }
    std::sort(found.words.begin(), found.words.end());
    return found;
}
