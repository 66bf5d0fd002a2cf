// The pure text operations on paths: absolute test, root, join, base name,
// directory name and the lexical clean-up of oruGetAbsolutePath.

#include "file/oru_file_internal.h"

#include <cstring>
#include <functional>
#include <new>

namespace oru::file {

namespace {

bool equal_separator_pair(const char* path) { return is_separator(path[0]) && path[1] == path[0]; }

bool drive_root(const char* path) {
  return is_ascii_letter(path[0]) && path[1] == ':' && is_separator(path[2]);
}

// True when [pointer, pointer + length] and [out, out + size) share bytes.
bool overlaps(const char* pointer, size_t length, const char* out, size_t size) {
  std::less<const char*> before;
  return before(pointer, out + size) && before(out, pointer + length + 1);
}

}  // namespace

ptrdiff_t root_end(const char* path, size_t length) {
  if (length >= 3 && drive_root(path)) return 3;
  if (length >= 2 && equal_separator_pair(path)) {
    size_t server = 2;
    size_t i = server;
    while (i < length && !is_separator(path[i])) ++i;
    if (i > server && i < length) {
      ++i;  // past the separator after the server
      if (i == length) return static_cast<ptrdiff_t>(i);
      while (i < length && !is_separator(path[i])) ++i;
      return static_cast<ptrdiff_t>(i < length ? i + 1 : i);
    }
  }
#if !defined(_WIN32)
  if (length >= 1 && path[0] == '/') return 1;
#endif
  return -1;
}

size_t normalize_after_root(char* text, size_t length, size_t rootEnd) {
  size_t out = rootEnd;
  size_t in = rootEnd;
  // At the start of a component when nothing has been written after the
  // root yet (the root ends in a separator or at the end of the text) or the
  // last byte written is a separator.
  auto at_component_start = [&] { return out == rootEnd || is_separator(text[out - 1]); };
  while (in < length) {
    char c = text[in];
    if (is_separator(c)) {
      if (at_component_start()) {
        ++in;  // a run of separators keeps its first
      } else {
        text[out++] = text[in++];
      }
      continue;
    }
    if (c == '.' && at_component_start()) {
      char next = in + 1 < length ? text[in + 1] : '\0';
      if (is_separator(next)) {  // "./"
        in += 2;
        continue;
      }
      if (next == '.') {
        char after = in + 2 < length ? text[in + 2] : '\0';
        if (is_separator(after)) {  // "../": drop the last component written
          in += 3;
          if (out > rootEnd) {
            size_t back = out - 1;  // the separator ending that component
            while (back > rootEnd && !is_separator(text[back - 1])) --back;
            out = back;
          }
          continue;
        }
        ++in;      // ".." before anything else: the first dot goes, the second
        continue;  // is seen again as a dot at the start of a component
      }
      ++in;  // "." before anything else, or at the end
      continue;
    }
    text[out++] = text[in++];
  }
  text[out] = '\0';
  return out;
}

}  // namespace oru::file

using namespace oru::file;

extern "C" {

ORU_API int oruIsAbsolutePath(const char* path) {
  if (path == nullptr || path[0] == '\0') return 0;
  if (equal_separator_pair(path)) return 1;
  if (drive_root(path)) return 1;
#if !defined(_WIN32)
  if (path[0] == '/') return 1;
#endif
  return 0;
}

ORU_API oruResult oruAppendToPath(const char* base, const char* name, char* out, size_t size) {
  if (base == nullptr || name == nullptr || out == nullptr) return ORU_E_INVALID_ARG;
  size_t baseLength = std::strlen(base);
  size_t nameLength = std::strlen(name);
  size_t separator = baseLength > 0 && !is_separator(base[baseLength - 1]) ? 1 : 0;
  if (baseLength + separator + nameLength >= size) return ORU_E_BUFFER_TOO_SMALL;

  // The name moves first: its new place lies past base's length, so a base
  // that starts at out survives it.  A base elsewhere inside out could be
  // overwritten and is copied aside.
  char* savedBase = nullptr;
  if (base != out && overlaps(base, baseLength, out, size)) {
    savedBase = new (std::nothrow) char[baseLength + 1];
    if (savedBase == nullptr) return ORU_E_OUT_OF_MEMORY;
    std::memcpy(savedBase, base, baseLength + 1);
    base = savedBase;
  }
  std::memmove(out + baseLength + separator, name, nameLength + 1);
  if (base != out) std::memmove(out, base, baseLength);
  if (separator != 0) out[baseLength] = kSeparator;
  delete[] savedBase;
  return ORU_OK;
}

ORU_API oruResult oruGetBasename(const char* path, char* out, size_t size) {
  if (path == nullptr || out == nullptr) return ORU_E_INVALID_ARG;
  const char* start = path;
  for (const char* p = path; *p != '\0'; ++p) {
    if (is_separator(*p)) start = p + 1;
  }
  size_t length = std::strlen(start);
  if (length >= size) return ORU_E_BUFFER_TOO_SMALL;
  std::memmove(out, start, length + 1);
  return ORU_OK;
}

ORU_API oruResult oruGetDirname(const char* path, char* out, size_t size) {
  if (path == nullptr || out == nullptr) return ORU_E_INVALID_ARG;
  size_t length = std::strlen(path);
  // Output is written at or before the input position it comes from, so the
  // same buffer works; an output that starts inside the path does not.
  char* copy = nullptr;
  if (path != out && overlaps(path, length, out, size)) {
    copy = new (std::nothrow) char[length + 1];
    if (copy == nullptr) return ORU_E_OUT_OF_MEMORY;
    std::memcpy(copy, path, length + 1);
    path = copy;
  }
  auto finish = [&](oruResult result) {
    delete[] copy;
    return result;
  };
  // Appends path[from, from + count) at written; the final piece also the
  // terminator (earlier ones must not: in place it would cut the input).
  size_t written = 0;
  auto emit = [&](size_t from, size_t count, bool final = true) {
    if (written + count >= size) return false;
    std::memmove(out + written, path + from, count);
    written += count;
    if (final) out[written] = '\0';
    return true;
  };

  size_t p = 0;
  for (;;) {
    bool drive = length - p >= 2 && is_ascii_letter(path[p]) && path[p + 1] == ':';
    bool unc = length - p >= 2 && equal_separator_pair(path + p);
    ptrdiff_t last = -1;
    for (size_t i = length; i > p; --i) {
      if (is_separator(path[i - 1])) {
        last = static_cast<ptrdiff_t>(i - 1);
        break;
      }
    }
    if (last > static_cast<ptrdiff_t>(p)) {
      while (last - 1 > static_cast<ptrdiff_t>(p) && is_separator(path[last - 1])) --last;
    }
    if (!unc) {
      if (last >= 0) {
        size_t before = static_cast<size_t>(last) - p;
        bool keep = before == 0 || (drive && before == 2);
        return finish(emit(p, before + (keep ? 1 : 0)) ? ORU_OK : ORU_E_BUFFER_TOO_SMALL);
      }
      if (drive) return finish(emit(p, 2) ? ORU_OK : ORU_E_BUFFER_TOO_SMALL);
      if (written + 1 >= size) return finish(ORU_E_BUFFER_TOO_SMALL);
      out[written++] = '.';
      out[written] = '\0';
      return finish(ORU_OK);
    }
    size_t first = p + 2;
    while (first < length && !is_separator(path[first])) ++first;
    if (first >= length || static_cast<ptrdiff_t>(first) == last) {
      return finish(emit(p, length - p) ? ORU_OK : ORU_E_BUFFER_TOO_SMALL);
    }
    if (!emit(p, first - p, false)) return finish(ORU_E_BUFFER_TOO_SMALL);
    size_t runEnd = first;
    while (runEnd + 1 < length && is_separator(path[runEnd + 1])) ++runEnd;
    p = runEnd;
  }
}

}  // extern "C"
