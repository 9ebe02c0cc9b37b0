// Stands in for the PPK2 source until it lands: a PPK2 session is refused
// at create, after its options were checked against what a PPK2 allows.

#include "sources.h"

namespace standin::sim {

std::unique_ptr<sample_source> make_ppk2_source(const std::string& port,
                                                const source_request& /*request*/,
                                                std::string& error) {
    error = "cannot use a PPK2" + (port.empty() ? std::string() : " at " + port) +
            ": PPK2 support is being built";
    return nullptr;
}

}  // namespace standin::sim
