#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <tuple>

#include "common/board_file.h"
#include "scratch_dir.h"
#include "tgcfgsetup/converter.h"
#include "tgcfgsetup/elf_functions.h"

// Two functions of this program, for reading the program's own ELF64 file.
extern "C" __attribute__((noinline, used)) int elf_test_first(int x) {
    return x + 1;
}
extern "C" __attribute__((noinline, used)) int elf_test_second(int x) {
    return x * 3;
}

namespace {

using standin_test::scratch_dir;
using function_list = std::vector<std::tuple<std::string, uint64_t, uint64_t>>;

function_list listed(const std::vector<standin::code_region>& functions) {
    function_list out;
    for (const standin::code_region& f : functions) {
        out.emplace_back(f.name, f.start, f.end);
    }
    return out;
}

// `fn name, size` makes a Thumb function of that size, local unless made global.
constexpr const char* prelude = R"(
    .syntax unified
    .thumb
    .macro fn name, size
    .type \name, %function
    .thumb_func
\name: .space \size
    .size \name, \size
    .endm
)";

// a.o: a global function; the local dup and shared; a function without a
// size; one whose name a board can't hold; a data object. Then b.o: a second
// local dup, higher up, and a global shared.
constexpr const char* first_file = R"(
    .global reset
    fn reset, 6
    fn dup, 2
    fn shared, 2
    .type no_size, %function
no_size: .space 2
    fn odd$fn, 2
    .data
    .type table, %object
table: .word 1, 2
    .size table, 8
)";
constexpr const char* second_file = R"(
    fn dup, 4
    .global shared
    fn shared, 2
)";

// Cortex-M firmware assembled and linked here, with .text at 0x08000400.
class cortex_m_firmware : public ::testing::Test {
  protected:
    void SetUp() override {
        if (std::system("command -v arm-none-eabi-as >/dev/null && "
                        "command -v arm-none-eabi-ld >/dev/null") != 0) {
            GTEST_SKIP() << "arm-none-eabi-as or -ld is missing (Debian: binutils-arm-none-eabi)";
        }
        dir_.write("a.s", std::string(prelude) + first_file);
        dir_.write("b.s", std::string(prelude) + second_file);
        const std::string link = "arm-none-eabi-ld -Ttext=0x08000400 -e reset ";
        ASSERT_EQ(run("arm-none-eabi-as a.s -o a.o && arm-none-eabi-as b.s -o b.o && " + link +
                      "a.o b.o -o fw.elf && " + link +
                      "-s a.o -o stripped.elf && "
                      "arm-none-eabi-as -EB a.s -o big.o && " +
                      link + "-EB big.o -o big.elf"),
                  0);
    }

    int run(const std::string& commands) const {
        return std::system(("cd '" + dir_.file("") + "' && " + commands).c_str());
    }

    // A target file of one mode with these lines in [target] and these sections after.
    static std::string target(const std::string& lines, const std::string& sections = "") {
        return "[target]\n" + lines +
               "\nname = fw\nsupply = 3 V\n[mode run]\ncurrent = 1 mA\ntime = 1 ms\n"
               "code = reset 50 %, dup 50 %\n" +
               sections;
    }

    // The converter's complaint, empty on success.
    std::string convert(const std::string& content) const {
        std::ostringstream errors;
        standin::convert_target_file(dir_.write("t.tgcfg", content), dir_.file("b.dat"), errors);
        return errors.str();
    }

    scratch_dir dir_;
};

// Thumb bits cleared; no data, sizeless or unnamable symbols; of two static
// dups the lower; a global shared over a static one below it; [code] adds
// and overrides. The ELF's path is taken from the target file's folder.
TEST_F(cortex_m_firmware, functions_come_from_the_symbol_table_and_code) {
    ASSERT_EQ(convert(target("firmware = fw.elf",
                             "[code]\nreset = 0x20000000 0x10\nextra = 0x100 4\n"
                             "[markers]\n1 = dup\n2 = run\n")),
              "");
    const standin::board_model board = standin::read_board_file(dir_.file("b.dat"));
    EXPECT_EQ(listed(board.functions), (function_list{{"extra", 0x100, 0x104},
                                                      {"dup", 0x08000406, 0x08000408},
                                                      {"shared", 0x08000412, 0x08000414},
                                                      {"reset", 0x20000000, 0x20000010}}));
    EXPECT_EQ(board.markers.size(), 2u);
}

// One line each, naming the target file's line and the ELF file; no output.
TEST_F(cortex_m_firmware, refusals_name_the_file_and_the_reason) {
    std::filesystem::create_directory(dir_.file("folder.elf"));
    const std::string fifo = standin_test::make_pipe(dir_);
    dir_.write("empty.elf", "");
    dir_.write("text.elf", "[target]\n");
    dir_.write("cut.elf", standin_test::read_file(dir_.file("fw.elf")).substr(0, 1000));
    const auto at = [&](const std::string& name) { return dir_.file(name); };
    const std::pair<std::string, std::string> cases[] = {
        {target("firmware = none.elf"), "2: cannot read " + at("none.elf") + ": No such file"},
        {target("firmware = folder.elf"), "2: cannot read " + at("folder.elf") + ": Is a dir"},
        {target("firmware = " + fifo), "2: cannot read " + fifo + ": Not a regular file"},
        {target("firmware = empty.elf"), "2: " + at("empty.elf") + " is not an ELF file"},
        {target("firmware = text.elf"), "2: " + at("text.elf") + " is not an ELF file"},
        {target("firmware = cut.elf"), "2: " + at("cut.elf") + " is truncated or damaged: "},
        {target("firmware = stripped.elf"), "2: " + at("stripped.elf") + " has no symbol table"},
        {target("firmware = big.elf"), "2: " + at("big.elf") + " is big-endian; the converter"},
        {target("firmware = a.o"), "2: " + at("a.o") + " is an object file; name the linked"},
        {target("firmware = fw.elf", "[mode m]\ncurrent = 1 A\ntime = 1 s\ncode = radio\n"),
         "9: function 'radio' of mode 'm' is neither in [code] nor in " + at("fw.elf") + "\n"},
        {target("firmware = fw.elf", "[markers]\n4 = reset\n5 = dma\n"),
         "11: marker 5 names 'dma', which is neither a mode nor a function in [code] or " +
             at("fw.elf") + "\n"}};
    for (const auto& [content, message] : cases) {
        const std::string errors = convert(content);
        EXPECT_EQ(errors.rfind("tgcfgsetup: " + at("t.tgcfg") + ":" + message, 0), 0u) << errors;
        EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
        EXPECT_FALSE(std::filesystem::exists(dir_.file("b.dat")));
    }
}

// The program's own ELF64 file: two functions lie as far apart as in memory.
TEST(elf_functions, reads_a_host_elf64_file) {
    std::vector<standin::code_region> functions;
    std::string problem;
    ASSERT_TRUE(standin::read_elf_functions("/proc/self/exe", functions, problem)) << problem;
    const auto find = [&](const char* name) {
        const auto at = std::find_if(functions.begin(), functions.end(),
                                     [&](const standin::code_region& f) { return f.name == name; });
        return at == functions.end() ? standin::code_region{} : *at;
    };
    const standin::code_region first = find("elf_test_first");
    const standin::code_region second = find("elf_test_second");
    EXPECT_GT(first.end, first.start);
    EXPECT_EQ(second.start - first.start, reinterpret_cast<uintptr_t>(&elf_test_second) -
                                              reinterpret_cast<uintptr_t>(&elf_test_first));
}

}  // namespace
