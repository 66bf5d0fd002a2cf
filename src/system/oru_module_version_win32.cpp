// Version attributes of Windows files: the version resource, read through
// the version API of version.dll (bound on first use, so that programs that
// never ask do not load it).

#include "core/oru_internal.h"
#include "oru/module.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

using size_fn = DWORD(WINAPI*)(LPCSTR, LPDWORD);
using info_fn = BOOL(WINAPI*)(LPCSTR, DWORD, DWORD, LPVOID);
using query_fn = BOOL(WINAPI*)(LPCVOID, LPCSTR, LPVOID*, PUINT);

struct version_api {
  size_fn size = nullptr;
  info_fn info = nullptr;
  query_fn query = nullptr;
};

template <typename F>
F bind(HMODULE module, const char* name) {
  FARPROC p = module != nullptr ? GetProcAddress(module, name) : nullptr;
  F f;
  static_assert(sizeof f == sizeof p);
  std::memcpy(&f, &p, sizeof f);
  return f;
}

const version_api& api() {
  static const version_api bound = [] {
    version_api a;
    HMODULE module = LoadLibraryA("version.dll");  // kept for the process's life
    a.size = bind<size_fn>(module, "GetFileVersionInfoSizeA");
    a.info = bind<info_fn>(module, "GetFileVersionInfoA");
    a.query = bind<query_fn>(module, "VerQueryValueA");
    return a;
  }();
  return bound;
}

// Whether the file is a PE image (an MZ header pointing at a PE signature);
// anything else is not a file the system executes or loads.
oruResult check_image(const char* path) {
  HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return oru_map_last_win32_error();
  IMAGE_DOS_HEADER dos{};
  DWORD got = 0;
  oruResult result = ORU_E_EXEC_FORMAT;
  if (ReadFile(file, &dos, sizeof dos, &got, nullptr) && got == sizeof dos &&
      dos.e_magic == IMAGE_DOS_SIGNATURE && dos.e_lfanew > 0) {
    LARGE_INTEGER at;
    at.QuadPart = dos.e_lfanew;
    DWORD signature = 0;
    if (SetFilePointerEx(file, at, nullptr, FILE_BEGIN) &&
        ReadFile(file, &signature, sizeof signature, &got, nullptr) && got == sizeof signature &&
        signature == IMAGE_NT_SIGNATURE) {
      result = ORU_OK;
    }
  }
  CloseHandle(file);
  return result;
}

// The whole version resource of the file; ORU_E_NOT_FOUND when it has none.
oruResult read_resource(const char* path, std::vector<unsigned char>& data) {
  oruResult r = check_image(path);
  if (ORU_FAILED(r)) return r;
  const version_api& a = api();
  if (a.size == nullptr || a.info == nullptr || a.query == nullptr) return ORU_E_NOT_SUPPORTED;
  DWORD ignored = 0;
  DWORD size = a.size(path, &ignored);
  if (size == 0) {
    DWORD error = GetLastError();
    if (error == ERROR_RESOURCE_DATA_NOT_FOUND || error == ERROR_RESOURCE_TYPE_NOT_FOUND ||
        error == ERROR_RESOURCE_NAME_NOT_FOUND || error == ERROR_RESOURCE_LANG_NOT_FOUND ||
        error == NO_ERROR) {
      return ORU_E_NOT_FOUND;
    }
    return oru_map_win32_error(error);
  }
  data.resize(size);
  if (!a.info(path, 0, size, data.data())) return oru_map_last_win32_error();
  return ORU_OK;
}

const char* attribute_name(int attribute) {
  switch (attribute) {
    case ORU_VERSION_FILE_VERSION:
      return "FileVersion";
    case ORU_VERSION_PRODUCT_VERSION:
      return "ProductVersion";
    case ORU_VERSION_COMPANY_NAME:
      return "CompanyName";
    case ORU_VERSION_FILE_DESCRIPTION:
      return "FileDescription";
    case ORU_VERSION_PRODUCT_NAME:
      return "ProductName";
    case ORU_VERSION_INTERNAL_NAME:
      return "InternalName";
    default:
      return "OriginalFilename";
  }
}

// The string in the resource's first translation, then in the usual US
// English tables.
bool find_string(const std::vector<unsigned char>& data, int attribute, std::string& text) {
  const version_api& a = api();
  std::vector<DWORD> tables;
  void* value = nullptr;
  UINT length = 0;
  if (a.query(data.data(), "\\VarFileInfo\\Translation", &value, &length) && value != nullptr &&
      length >= 4) {
    const auto* pairs = static_cast<const WORD*>(value);
    for (UINT i = 0; i + 1 < length / 2; i += 2) {
      tables.push_back((DWORD{pairs[i]} << 16) | pairs[i + 1]);
    }
  }
  tables.push_back(0x040904B0);  // US English, Unicode
  tables.push_back(0x040904E4);  // US English, windows-1252
  for (DWORD table : tables) {
    char key[64];
    std::snprintf(key, sizeof key, "\\StringFileInfo\\%08lX\\%s", static_cast<unsigned long>(table),
                  attribute_name(attribute));
    value = nullptr;
    length = 0;
    if (a.query(data.data(), key, &value, &length) && value != nullptr && length > 0) {
      const char* s = static_cast<const char*>(value);
      text.assign(s, strnlen(s, length));
      if (!text.empty()) return true;
    }
  }
  return false;
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
    std::vector<unsigned char> data;
    oruResult r = read_resource(path, data);
    if (ORU_FAILED(r)) return r;
    std::string text;
    if (!find_string(data, attribute, text)) return ORU_E_NOT_FOUND;
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
    std::vector<unsigned char> data;
    oruResult r = read_resource(path, data);
    if (ORU_FAILED(r)) return r;
    void* value = nullptr;
    UINT length = 0;
    if (!api().query(data.data(), "\\", &value, &length) || value == nullptr ||
        length < sizeof(VS_FIXEDFILEINFO)) {
      return ORU_E_NOT_FOUND;
    }
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
    if (fixed->dwSignature != 0xFEEF04BD) return ORU_E_NOT_FOUND;
    auto split = [](DWORD ms, DWORD ls, uint16_t(&out)[4]) {
      out[0] = HIWORD(ms);
      out[1] = LOWORD(ms);
      out[2] = HIWORD(ls);
      out[3] = LOWORD(ls);
    };
    oruVersionNumbers result{};
    split(fixed->dwFileVersionMS, fixed->dwFileVersionLS, result.fileVersion);
    split(fixed->dwProductVersionMS, fixed->dwProductVersionLS, result.productVersion);
    *numbers = result;
    return ORU_OK;
  } catch (const std::bad_alloc&) {
    return ORU_E_OUT_OF_MEMORY;
  }
}

}  // extern "C"
