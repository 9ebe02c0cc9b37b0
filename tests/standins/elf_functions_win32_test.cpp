#include <gtest/gtest.h>

#include <sstream>

#include "scratch_dir.h"
#include "tgcfgsetup/converter.h"

namespace {

// This build has no libelf: the firmware is refused before it is looked for.
TEST(converter, refuses_firmware_without_libelf) {
    standin_test::scratch_dir dir;
    const std::string input = dir.write("t.tgcfg", "[target]\nfirmware = fw.elf\n");
    std::ostringstream errors;
    EXPECT_EQ(standin::convert_target_file(input, dir.file("b.dat"), errors), 1);
    EXPECT_EQ(errors.str(), "tgcfgsetup: " + input +
                                ":2: firmware = needs libelf, which this build of the converter "
                                "lacks; list the functions in [code]\n");
}

}  // namespace
