#include "options/argtable_binding.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

const std::string doubles = ZELNO_TEST_LIBRARY_DIR;

// The text that binding throws, "" when it binds.
std::string bind_failure(argtable_binding& binding) {
    try {
        binding.bind_argtable();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(argtable_binding, once_bound_looks_nothing_up_again) {
    argtable_binding& binding = get_argtable_binding();
    EXPECT_EQ(binding.find_argtable_symbol(nullptr), nullptr);
    // A look-up would fill the slot again.
    const auto parse = binding.arg_parse;
    binding.arg_parse = nullptr;
    EXPECT_EQ(&get_argtable_binding(), &binding);
    EXPECT_EQ(binding.arg_parse, nullptr);
    binding.arg_parse = parse;
}

TEST(argtable_binding, a_failed_load_is_not_remembered) {
    argtable_binding binding;
    binding.library_file = "libzelno_missing_argtable.so.0";
    EXPECT_EQ(bind_failure(binding), "Failed to load libzelno_missing_argtable.so.0");
    binding.library_file = doubles + "/argtable_underscore/" ARGTABLE_FILE;
    EXPECT_EQ(bind_failure(binding), "");
    EXPECT_TRUE(binding.initialised);
}

TEST(argtable_binding, a_missing_symbol_keeps_the_slots_in_front_and_the_search_resumes_there) {
    argtable_binding binding;
    binding.library_file = doubles + "/argtable_no_dbln/" ARGTABLE_FILE;
    const std::string refusal = "Symbol not found in " + binding.library_file + ": arg_dbln";
    EXPECT_EQ(bind_failure(binding), refusal);
    // In front of the gap, arg_intn came only under its underscore.
    EXPECT_NE(binding.arg_parse, nullptr);
    EXPECT_NE(binding.arg_intn, nullptr);
    EXPECT_EQ(binding.arg_strn, nullptr);

    // Filled slots are passed over; the search goes on at the gap.
    const auto marked_litn =
        +[](const char*, const char*, int, int, const char*) -> arg_lit* { return nullptr; };
    binding.arg_litn = marked_litn;
    EXPECT_EQ(bind_failure(binding), refusal);
    binding.arg_dbln = [](const char*, const char*, const char*, int, int,
                          const char*) -> arg_dbl* { return nullptr; };
    EXPECT_EQ(bind_failure(binding), "");
    EXPECT_TRUE(binding.initialised);
    EXPECT_EQ(binding.arg_litn, marked_litn);
    EXPECT_NE(binding.arg_dbln, nullptr);
    EXPECT_NE(binding.arg_freetable, nullptr);
}

}  // namespace
