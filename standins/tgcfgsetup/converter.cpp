#include "tgcfgsetup/converter.h"

#include "common/atomic_file.h"
#include "common/board_file.h"
#include "common/text_input.h"
#include "tgcfgsetup/target_file.h"

namespace standin {

int convert_target_file(const std::string& input, const std::string& output, std::ostream& errors) {
    try {
        const board_model board = parse_target(read_whole_file(input), input);
        const std::string text = render_board(board, base_name(input));
        // What we write must be what the simulator reads; a slip here would
        // otherwise only show at the first capture.
        parse_board(text, output);
        std::string error;
        if (!write_file_atomically(output, text, error)) {
            errors << "tgcfgsetup: " << error << std::endl;
            return 1;
        }
        return 0;
    } catch (const std::exception& e) {
        errors << "tgcfgsetup: " << e.what() << std::endl;
        return 1;
    } catch (...) {
        errors << "tgcfgsetup: cannot convert " << input << std::endl;
        return 1;
    }
}

}  // namespace standin
