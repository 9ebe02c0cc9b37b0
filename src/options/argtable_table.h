#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "options/argtable_binding.h"

// One command's argtable2 option table. Frees its entries on every way out,
// so a handler can throw at any step.
template <std::size_t entry_count>
class argtable_table {
  public:
    argtable_table(argtable_binding& parser, std::array<void*, entry_count> table_entries)
        : binding(parser), entries(table_entries) {}
    ~argtable_table() { binding.arg_freetable(entries.data(), entry_count); }
    argtable_table(const argtable_table&) = delete;
    argtable_table& operator=(const argtable_table&) = delete;

    bool has_null_entry() { return binding.arg_nullcheck(entries.data()) != 0; }

    // Parses the words; the array points into `words`, which must outlive
    // the table's use of the values. Returns the number of errors.
    int parse(std::vector<std::string>& words) {
        argv.clear();
        for (std::string& word : words) {
            argv.push_back(word.data());
        }
        return binding.arg_parse(static_cast<int32_t>(argv.size()), argv.data(), entries.data());
    }

  private:
    argtable_binding& binding;
    std::array<void*, entry_count> entries;
    std::vector<char*> argv;
};
