// The objects zelno hands a library, read back by their bytes with the C
// readers of the test doubles, which know the library's layout and nothing
// of zelno's types. The empty string is here because no command line can
// give one (the parser refuses an empty value).

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "library_string.h"
#include "usecase/record_fields.h"
#include "usecases/usecase_abi.h"

namespace {

const unsigned char* bytes_of(const void* object) {
    return static_cast<const unsigned char*>(object);
}

// The callee's parameter: the object itself on one ABI, its address on the other.
template <typename Argument>
unsigned char* argument_bytes(Argument& argument) {
    if constexpr (std::is_pointer_v<Argument>) {
        return reinterpret_cast<unsigned char*>(argument);
    } else {
        return reinterpret_cast<unsigned char*>(&argument);
    }
}

TEST(library_types, strings_of_every_length_read_whole_in_records_and_as_arguments) {
    for (const size_t length : {0, 2, 15, 16, 30, 31, 200}) {
        std::string text;
        for (size_t i = 0; i < length; ++i) {
            text += static_cast<char>('a' + i % 26);
        }
        SCOPED_TRACE(length);
        prodtest_options record;
        record.input = text;
        record.config = text.c_str();
        record.device = std::string_view(text);
        char name[record_text_room];
        char line[record_line_room];
        describe_prodtest_record(bytes_of(&record), name, line);
        EXPECT_EQ(std::string(line), "input=" + text + " config=" + text + " device=" + text);
        EXPECT_EQ(VX_UTL::text_of(record.device), text);

        VX_UTL::uStringArgument argument(text);
        auto passed = argument.hand_over();
        char received[record_text_room];
        EXPECT_EQ(read_library_string(argument_bytes(passed), received, sizeof received), nullptr);
        EXPECT_EQ(std::string(received), text);
        EXPECT_EQ(destroy_string_argument(argument_bytes(passed)), nullptr);
    }
}

// A string assigned again, also from its own text, stays one the library can read.
TEST(library_types, a_reassigned_string_reads_as_its_last_text) {
    wattscope_options record{};
    record.output = std::string(200, 'x');
    record.output = VX_UTL::text_of(record.output).substr(0, 20);
    record.format = "a long format that needs the heap";
    record.format = "csv";
    char name[record_text_room];
    char line[record_line_room];
    describe_wattscope_record(bytes_of(&record), name, line);
    EXPECT_EQ(std::string(name), std::string(20, 'x'));
    EXPECT_NE(std::string(line).find(" format=csv "), std::string::npos) << line;
}

}  // namespace
