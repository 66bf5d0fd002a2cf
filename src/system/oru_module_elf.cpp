// Version attributes of ELF files.  ELF has no version resource; the
// attributes are answered from the real file name behind any symbolic links
// and from the DT_SONAME of the dynamic section (see oru/module.h).

#include "core/oru_internal.h"
#include "oru/module.h"

#include <elf.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

// Reads exactly size bytes at offset; false on a short file or an error
// (errno then set, 0 for a short file).
bool read_at(int fd, uint64_t offset, void* buffer, size_t size) {
  char* p = static_cast<char*>(buffer);
  while (size > 0) {
    ssize_t n = pread(fd, p, size, static_cast<off_t>(offset));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = 0;
      return false;
    }
    p += n;
    size -= static_cast<size_t>(n);
    offset += static_cast<uint64_t>(n);
  }
  return true;
}

struct elf_file {
  int fd = -1;
  uint64_t size = 0;
  ~elf_file() {
    if (fd >= 0) close(fd);
  }
};

// A short read inside the declared structures means a damaged or foreign
// file; an error of the system is translated.
oruResult read_failure() { return errno == 0 ? ORU_E_EXEC_FORMAT : oru_map_posix_error(errno); }

// The DT_SONAME of an ELF file of class Ehdr/Shdr/Dyn; an empty soname when
// the file has none.
template <typename Ehdr, typename Shdr, typename Dyn>
oruResult read_soname(const elf_file& f, std::string& soname) {
  Ehdr header;
  if (!read_at(f.fd, 0, &header, sizeof header)) return read_failure();
  if (header.e_type != ET_DYN && header.e_type != ET_EXEC) return ORU_E_EXEC_FORMAT;
  if (header.e_shoff == 0 || header.e_shnum == 0) return ORU_OK;  // sections stripped
  if (header.e_shentsize != sizeof(Shdr)) return ORU_E_EXEC_FORMAT;
  const uint64_t table = header.e_shoff;
  if (table > f.size || (f.size - table) / sizeof(Shdr) < header.e_shnum) return ORU_E_EXEC_FORMAT;
  std::vector<Shdr> sections(header.e_shnum);
  if (!read_at(f.fd, table, sections.data(), sections.size() * sizeof(Shdr))) {
    return read_failure();
  }
  for (const Shdr& dynamic : sections) {
    if (dynamic.sh_type != SHT_DYNAMIC) continue;
    if (dynamic.sh_link >= sections.size()) return ORU_E_EXEC_FORMAT;
    const Shdr& strings = sections[dynamic.sh_link];
    if (dynamic.sh_offset > f.size || dynamic.sh_size > f.size - dynamic.sh_offset ||
        strings.sh_offset > f.size || strings.sh_size > f.size - strings.sh_offset) {
      return ORU_E_EXEC_FORMAT;
    }
    std::vector<Dyn> entries(dynamic.sh_size / sizeof(Dyn));
    if (!read_at(f.fd, dynamic.sh_offset, entries.data(), entries.size() * sizeof(Dyn))) {
      return read_failure();
    }
    for (const Dyn& entry : entries) {
      if (entry.d_tag == DT_NULL) break;
      if (entry.d_tag != DT_SONAME) continue;
      uint64_t at = entry.d_un.d_val;
      if (at >= strings.sh_size) return ORU_E_EXEC_FORMAT;
      // The name ends at its zero, which must lie inside the string table.
      std::string name;
      char chunk[256];
      while (at < strings.sh_size) {
        size_t n = static_cast<size_t>(std::min<uint64_t>(sizeof chunk, strings.sh_size - at));
        if (!read_at(f.fd, strings.sh_offset + at, chunk, n)) return read_failure();
        const void* end = std::memchr(chunk, '\0', n);
        if (end != nullptr) {
          name.append(chunk, static_cast<const char*>(end) - chunk);
          soname = name;
          return ORU_OK;
        }
        name.append(chunk, n);
        at += n;
      }
      return ORU_E_EXEC_FORMAT;
    }
    return ORU_OK;
  }
  return ORU_OK;
}

// What follows ".so." in a file name; empty when there is none.
std::string version_suffix(const std::string& name) {
  size_t at = name.rfind(".so.");
  return at == std::string::npos ? std::string() : name.substr(at + 4);
}

// The attributes an ELF file can answer.
struct elf_attributes {
  std::string real_name;  // last component of the real file name
  std::string soname;
};

oruResult read_attributes(const char* path, elf_attributes& out) {
  char real[PATH_MAX];
  if (realpath(path, real) == nullptr) return oru_map_posix_error(errno);
  const char* slash = std::strrchr(real, '/');
  out.real_name = slash != nullptr ? slash + 1 : real;

  elf_file f;
  do {
    f.fd = open(real, O_RDONLY | O_CLOEXEC);
  } while (f.fd < 0 && errno == EINTR);
  if (f.fd < 0) return oru_map_posix_error(errno);
  off_t end = lseek(f.fd, 0, SEEK_END);
  if (end < 0) return oru_map_posix_error(errno);
  f.size = static_cast<uint64_t>(end);

  unsigned char ident[EI_NIDENT];
  if (!read_at(f.fd, 0, ident, sizeof ident)) return read_failure();
  if (std::memcmp(ident, ELFMAG, SELFMAG) != 0) return ORU_E_EXEC_FORMAT;
  const unsigned char native_data =
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
      ELFDATA2LSB;
#else
      ELFDATA2MSB;
#endif
  // Files of the other byte order are not objects this system loads.
  if (ident[EI_DATA] != native_data) return ORU_E_EXEC_FORMAT;
  if (ident[EI_CLASS] == ELFCLASS64)
    return read_soname<Elf64_Ehdr, Elf64_Shdr, Elf64_Dyn>(f, out.soname);
  if (ident[EI_CLASS] == ELFCLASS32)
    return read_soname<Elf32_Ehdr, Elf32_Shdr, Elf32_Dyn>(f, out.soname);
  return ORU_E_EXEC_FORMAT;
}

oruResult attribute_text(const elf_attributes& a, int attribute, std::string& text) {
  switch (attribute) {
    case ORU_VERSION_FILE_VERSION:
      text = version_suffix(a.real_name);
      break;
    case ORU_VERSION_PRODUCT_VERSION:
      text = version_suffix(a.soname);
      break;
    case ORU_VERSION_INTERNAL_NAME:
      text = a.soname;
      break;
    case ORU_VERSION_ORIGINAL_FILENAME:
      text = a.real_name;
      break;
    default:  // company, description, product name: no counterpart
      text.clear();
      break;
  }
  return text.empty() ? ORU_E_NOT_FOUND : ORU_OK;
}

// "1.2.3" -> 1, 2, 3, 0.  False when a part is not a decimal number of at
// most 65535; parts beyond the fourth are ignored.
bool parse_numbers(const std::string& text, uint16_t (&numbers)[4]) {
  uint16_t parsed[4] = {0, 0, 0, 0};
  size_t at = 0;
  for (int part = 0; part < 4 && at <= text.size(); ++part) {
    size_t stop = text.find('.', at);
    if (stop == std::string::npos) stop = text.size();
    if (stop == at) return false;
    uint32_t value = 0;
    for (size_t i = at; i < stop; ++i) {
      if (text[i] < '0' || text[i] > '9') return false;
      value = value * 10 + static_cast<uint32_t>(text[i] - '0');
      if (value > 65535) return false;
    }
    parsed[part] = static_cast<uint16_t>(value);
    at = stop + 1;
  }
  std::memcpy(numbers, parsed, sizeof parsed);
  return true;
}

}  // namespace

extern "C" {

ORU_API oruResult oruGetFileVersionString(const char* path, int attribute, char* buffer,
                                          size_t size) {
  if (path == nullptr || buffer == nullptr || size == 0 || attribute < ORU_VERSION_FILE_VERSION ||
      attribute > ORU_VERSION_ORIGINAL_FILENAME) {
    return ORU_E_INVALID_ARG;
  }
  buffer[0] = '\0';
  try {
    elf_attributes a;
    oruResult r = read_attributes(path, a);
    if (ORU_FAILED(r)) return r;
    std::string text;
    r = attribute_text(a, attribute, text);
    if (ORU_FAILED(r)) return r;
    if (text.size() >= size) return ORU_E_BUFFER_TOO_SMALL;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return ORU_OK;
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

ORU_API oruResult oruGetFileVersionNumbers(const char* path, oruVersionNumbers* numbers) {
  if (path == nullptr || numbers == nullptr) return ORU_E_INVALID_ARG;
  try {
    elf_attributes a;
    oruResult r = read_attributes(path, a);
    if (ORU_FAILED(r)) return r;
    oruVersionNumbers result{};
    if (!parse_numbers(version_suffix(a.real_name), result.fileVersion)) return ORU_E_NOT_FOUND;
    std::string product = version_suffix(a.soname);
    if (!product.empty() && !parse_numbers(product, result.productVersion)) {
      return ORU_E_NOT_FOUND;
    }
    *numbers = result;
    return ORU_OK;
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // extern "C"
