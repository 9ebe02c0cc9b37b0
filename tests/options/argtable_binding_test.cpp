#include "options/argtable_binding.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

const std::string underscore_double =
    ZELNO_TEST_LIBRARY_DIR "/argtable_underscore/libargtable2.so.0";

// The text that binding throws, "" when it binds.
template <typename Bind>
std::string failure(Bind bind) {
    try {
        bind();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

std::string bind_failure(argtable_binding& binding) {
    return failure([&binding] { binding.bind_argtable(); });
}

// Which double answers, or "" for the system's own library.
std::string double_variant(argtable_binding& binding) {
    const auto variant =
        reinterpret_cast<const char* (*)()>(binding.library.get_symbol("zelno_argtable_double"));
    return variant != nullptr ? variant() : "";
}

// The bound functions are the library's: a table built and parsed through
// the slots gives the values.
void expect_parses(argtable_binding& binding) {
    arg_lit* verbose = binding.arg_litn("v", "verbose", 0, 1, "");
    arg_int* number = binding.arg_intn("n", nullptr, "<n>", 0, 1, "");
    arg_str* name = binding.arg_strn(nullptr, "name", "<s>", 0, 1, "");
    struct arg_end* end = binding.arg_end(20);
    void* table[] = {verbose, number, name, end};
    ASSERT_EQ(binding.arg_nullcheck(table), 0);
    char command[] = "cmd", flag[] = "-v", short_int[] = "-n", seven[] = "7", long_str[] = "--name",
         x[] = "x";
    char* argv[] = {command, flag, short_int, seven, long_str, x};
    EXPECT_EQ(binding.arg_parse(6, argv, table), 0);
    EXPECT_EQ(verbose->count, 1);
    EXPECT_EQ(number->ival[0], 7);
    EXPECT_STREQ(name->sval[0], "x");
    binding.arg_freetable(table, 4);
}

TEST(RealArgtable, BindsThroughTheLoadersSearchAndStaysBound) {
    argtable_binding& binding = get_argtable_binding();
    EXPECT_EQ(binding.library_file, "libargtable2.so.0");
    EXPECT_TRUE(binding.initialised);
    EXPECT_EQ(double_variant(binding), "");
    expect_parses(binding);

    // A look-up would fill the slot again.
    const auto parse = binding.arg_parse;
    binding.arg_parse = nullptr;
    EXPECT_EQ(&get_argtable_binding(), &binding);
    EXPECT_EQ(binding.arg_parse, nullptr);
    binding.arg_parse = parse;
}

TEST(ArgtableRecord, LoadFailureIsNotRemembered) {
    argtable_binding binding;
    binding.library_file = "libzelno_missing_argtable.so.0";
    EXPECT_EQ(bind_failure(binding), "Failed to load libzelno_missing_argtable.so.0");
    EXPECT_EQ(bind_failure(binding), "Failed to load libzelno_missing_argtable.so.0");
    EXPECT_EQ(binding.arg_parse, nullptr);

    binding.library_file = underscore_double;
    EXPECT_EQ(bind_failure(binding), "");
    EXPECT_TRUE(binding.initialised);
    EXPECT_EQ(binding.find_argtable_symbol(nullptr), nullptr);
}

TEST(UnderscoreArgtable, BindsEveryNameUnderItsUnderscore) {
    argtable_binding& binding = get_argtable_binding();
    ASSERT_EQ(double_variant(binding), "underscore");
    EXPECT_EQ(binding.library.get_symbol("arg_parse"), nullptr);
    EXPECT_EQ(binding.find_argtable_symbol("arg_parse"), binding.library.get_symbol("_arg_parse"));
    expect_parses(binding);
}

// Stands in for the missing export once the test has seen the refusals.
arg_dbl* supplied_dbln(const char*, const char*, const char*, int, int, const char*) {
    return nullptr;
}

// Marks a filled slot, to see that it is passed over.
arg_lit* marked_litn(const char*, const char*, int, int, const char*) {
    return nullptr;
}

TEST(NoDblnArgtable, RefusedNamingTheGapAndResumedAtIt) {
    const std::string refusal = "Symbol not found in libargtable2.so.0: arg_dbln";
    EXPECT_EQ(failure(get_argtable_binding), refusal);
    EXPECT_EQ(failure(get_argtable_binding), refusal);

    argtable_binding binding;
    EXPECT_EQ(bind_failure(binding), refusal);
    ASSERT_EQ(double_variant(binding), "no_dbln");
    // In front of the gap, arg_intn came only under its underscore.
    EXPECT_NE(binding.arg_parse, nullptr);
    EXPECT_NE(binding.arg_litn, nullptr);
    EXPECT_NE(binding.arg_intn, nullptr);
    EXPECT_EQ(binding.arg_strn, nullptr);
    EXPECT_EQ(binding.arg_freetable, nullptr);

    // Filled slots are passed over; the search goes on at the gap.
    binding.arg_litn = marked_litn;
    EXPECT_EQ(bind_failure(binding), refusal);
    binding.arg_dbln = supplied_dbln;
    EXPECT_EQ(bind_failure(binding), "");
    EXPECT_TRUE(binding.initialised);
    EXPECT_EQ(binding.arg_litn, marked_litn);
    EXPECT_EQ(binding.arg_dbln, supplied_dbln);
    EXPECT_NE(binding.arg_freetable, nullptr);
}

}  // namespace
