#include "utilities/upath.h"

#include "utilities/uplatform.h"
#include "utilities/ustring.h"

namespace VX_UTL {

void uPath::append(std::string& path, const char* piece) {
    const char separator = uPlatform::path_separator;
    const char foreign = separator == '/' ? '\\' : '/';
    if (!path.empty() && path.back() != separator) {
        path += separator;
    }
    path += piece;

    const char separator_text[] = {separator, '\0'};
    const char foreign_text[] = {foreign, '\0'};
    const char pair_text[] = {separator, separator, '\0'};
    uString::replace(path, foreign_text, separator_text);
    // One pass leaves pairs behind in a run of three or more, so repeat.
    std::string before;
    do {
        before = path;
        uString::replace(path, pair_text, separator_text);
    } while (path != before);
}

}  // namespace VX_UTL
