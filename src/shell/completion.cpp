#include "shell/completion.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
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

// Names in the folder part of `typed` that begin with the rest; hidden ones
// only when asked for with a leading dot.
void add_files(std::string_view typed, std::vector<std::string>& out) {
    const std::size_t slash = typed.rfind('/');
    const std::string folder(slash == std::string_view::npos ? "" : typed.substr(0, slash + 1));
    const std::string_view prefix = typed.substr(folder.size());
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
        out.push_back(folder + name + (entry.is_directory(kind_error) ? '/' : ' '));
    }
}

}  // namespace

VX_UTL::completion complete_words(const std::string& before_cursor) {
    VX_UTL::completion found;
    const std::size_t command_start = before_cursor.rfind(';') + 1;  // npos + 1 is 0.
    const std::size_t space = before_cursor.rfind(' ');
    found.word_start =
        space == std::string::npos ? command_start : std::max(space + 1, command_start);
    const std::string_view typed = std::string_view(before_cursor).substr(found.word_start);

    word_list earlier;
    std::string_view rest =
        std::string_view(before_cursor).substr(command_start, found.word_start - command_start);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        if (end > 0) {
            earlier.push_back(rest.substr(0, end));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }

    if (earlier.empty() || earlier.front() == "help") {
        add_matching(command_names(), typed, found.words);
    } else if (const command_words* words = words_of(earlier.front())) {
        const word_list& files = words->file_options;
        if (std::find(files.begin(), files.end(), earlier.back()) != files.end()) {
            add_files(typed, found.words);
        } else if (typed.starts_with('-')) {
            add_matching(words->options, typed, found.words);
        } else {
            add_matching(words->values, typed, found.words);
        }
    }
    std::sort(found.words.begin(), found.words.end());
    return found;
}
