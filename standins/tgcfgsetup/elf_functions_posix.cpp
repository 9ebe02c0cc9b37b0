#include <gelf.h>
#include <libelf.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unordered_map>

#include "common/native_file.h"
#include "common/text_input.h"
#include "tgcfgsetup/elf_functions.h"

namespace standin {

namespace {

// How strongly a symbol claims its name: a global definition is the one the
// linker resolves calls to, a local one is a static function of one file.
int claim_of(const GElf_Sym& symbol) {
    switch (GELF_ST_BIND(symbol.st_info)) {
        case STB_GLOBAL:
            return 2;
        case STB_WEAK:
            return 1;
        default:
            return 0;
    }
}

bool is_defined_function(const GElf_Sym& symbol) {
    const unsigned section = symbol.st_shndx;
    return GELF_ST_TYPE(symbol.st_info) == STT_FUNC && symbol.st_size > 0 && section != SHN_UNDEF &&
           (section < SHN_LORESERVE || section == SHN_XINDEX);
}

// One open ELF file; `problem` is set by the first step that fails.
class elf_file {
  public:
    elf_file(const std::string& path, std::string& problem) : path_(path), problem_(problem) {}
    ~elf_file() {
        if (elf_ != nullptr) {
            elf_end(elf_);
        }
        if (file_ != no_file) {
            close_file(file_);
        }
    }
    elf_file(const elf_file&) = delete;
    elf_file& operator=(const elf_file&) = delete;

    bool read(std::vector<code_region>& functions) {
        return open() && check_header() && read_symbols(functions);
    }

  private:
    bool refuse(const std::string& problem) {
        problem_ = problem;
        return false;
    }

    bool damaged(const std::string& reason) {
        return refuse(path_ + " is truncated or damaged: " + reason);
    }
    bool damaged() { return damaged(elf_errmsg(-1)); }

    // Whether the file holds the bytes up to `end`.
    bool reaches(uint64_t end) const {
        char byte = 0;
        return end == 0 || read_at(file_, end - 1, &byte, 1) == 1;
    }

    // Never waits on a FIFO, and refuses what is no regular file before
    // libelf sees it.
    bool open() {
        file_kind kind = file_kind::other;
        file_ = open_for_input(path_, kind);
        if (file_ == no_file) {
            return refuse("cannot read " + path_ + ": " + std::strerror(errno));
        }
        if (kind == file_kind::directory) {
            return refuse("cannot read " + path_ + ": " + std::strerror(EISDIR));
        }
        if (kind != file_kind::regular) {
            return refuse("cannot read " + path_ + ": Not a regular file");
        }
        if (elf_version(EV_CURRENT) == EV_NONE) {
            return refuse("cannot read " + path_ + ": libelf is older than its header");
        }
        // Read, not mapped: a file cut short while mapped would kill the
        // process with SIGBUS.
        elf_ = elf_begin(static_cast<int>(file_), ELF_C_READ, nullptr);
        if (elf_ == nullptr || elf_kind(elf_) != ELF_K_ELF) {
            return refuse(path_ + " is not an ELF file");
        }
        return true;
    }

    bool check_header() {
        const char* ident = elf_getident(elf_, nullptr);
        if (ident == nullptr || gelf_getehdr(elf_, &header_) == nullptr) {
            return damaged();
        }
        if (ident[EI_DATA] == ELFDATA2MSB) {
            return refuse(path_ + " is big-endian; the converter reads little-endian ELF files");
        }
        // libelf takes a section header table that the file's end cuts off
        // for none at all, which would read as a stripped file.
        const uint64_t table_end =
            header_.e_shoff + uint64_t{header_.e_shnum} * header_.e_shentsize;
        if (table_end < header_.e_shoff || !reaches(table_end)) {
            return damaged("its section headers lie beyond its end");
        }
        if (header_.e_type == ET_REL) {
            // Its addresses are offsets into sections that nothing has placed yet.
            return refuse(path_ + " is an object file; name the linked firmware");
        }
        return true;
    }

    bool read_symbols(std::vector<code_region>& functions) {
        size_t sections = 0;
        if (elf_getshdrnum(elf_, &sections) != 0) {
            return damaged();
        }
        for (Elf_Scn* section = elf_nextscn(elf_, nullptr); section != nullptr;
             section = elf_nextscn(elf_, section)) {
            GElf_Shdr section_header;
            if (gelf_getshdr(section, &section_header) == nullptr) {
                return damaged();
            }
            if (section_header.sh_type == SHT_SYMTAB) {
                return read_table(section, section_header.sh_link, functions);
            }
        }
        // A shared library's dynamic symbols name only its exports: no help.
        return refuse(path_ + " has no symbol table: it was stripped");
    }

    bool read_table(Elf_Scn* section, size_t names, std::vector<code_region>& functions) {
        Elf_Data* data = elf_getdata(section, nullptr);
        const size_t entry = gelf_fsize(elf_, ELF_T_SYM, 1, EV_CURRENT);
        if (data == nullptr || entry == 0) {
            return damaged();
        }
        struct choice {
            code_region region;
            int claim;
        };
        std::unordered_map<std::string, choice> chosen;
        const bool thumb = header_.e_machine == EM_ARM;
        for (size_t i = 0; i < data->d_size / entry; ++i) {
            GElf_Sym symbol;
            if (gelf_getsym(data, static_cast<int>(i), &symbol) == nullptr) {
                return damaged();
            }
            if (!is_defined_function(symbol)) {
                continue;
            }
            const char* name = elf_strptr(elf_, names, symbol.st_name);
            if (name == nullptr) {
                return damaged();
            }
            const uint64_t start = thumb ? symbol.st_value & ~uint64_t{1} : symbol.st_value;
            if (!is_name(name) || start + symbol.st_size < start) {
                continue;
            }
            const choice candidate{{name, start, start + symbol.st_size}, claim_of(symbol)};
            const auto [at, added] = chosen.emplace(name, candidate);
            choice& held = at->second;
            if (!added && (candidate.claim > held.claim ||
                           (candidate.claim == held.claim && start < held.region.start))) {
                held = candidate;
            }
        }
        functions.clear();
        for (auto& [name, pick] : chosen) {
            functions.push_back(std::move(pick.region));
        }
        std::sort(functions.begin(), functions.end(),
                  [](const code_region& a, const code_region& b) {
                      return a.start != b.start ? a.start < b.start : a.name < b.name;
                  });
        return true;
    }

    const std::string& path_;
    std::string& problem_;
    file_handle file_ = no_file;
    Elf* elf_ = nullptr;
    GElf_Ehdr header_{};
};

}  // namespace

bool read_elf_functions(const std::string& path, std::vector<code_region>& functions,
                        std::string& problem) {
    return elf_file(path, problem).read(functions);
}

}  // namespace standin
