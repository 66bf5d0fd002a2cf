// The English system messages of the Win32 error numbers that the error
// translator names, for systems that have no FormatMessageA.  Each text is
// the one an English Windows gives, trailing "\r\n" included, so that a
// result code prints the same on every platform.  Inserts such as "%1" are
// left as they stand, as the system leaves them when asked to ignore them.

#include "core/oru_internal.h"

namespace {

struct Win32Text {
  uint32_t number;
  const char* text;
};

// Sorted by number.
constexpr Win32Text kWin32Texts[] = {
    {2, "The system cannot find the file specified.\r\n"},
    {3, "The system cannot find the path specified.\r\n"},
    {4, "The system cannot open the file.\r\n"},
    {5, "Access is denied.\r\n"},
    {6, "The handle is invalid.\r\n"},
    {8, "Not enough memory resources are available to process this command.\r\n"},
    {11, "An attempt was made to load a program with an incorrect format.\r\n"},
    {13, "The data is invalid.\r\n"},
    {14, "Not enough memory resources are available to complete this operation.\r\n"},
    {15, "The system cannot find the drive specified.\r\n"},
    {16, "The directory cannot be removed.\r\n"},
    {17, "The system cannot move the file to a different disk drive.\r\n"},
    {19, "The media is write protected.\r\n"},
    {20, "The system cannot find the device specified.\r\n"},
    {21, "The device is not ready.\r\n"},
    {22, "The device does not recognize the command.\r\n"},
    {23, "Data error (cyclic redundancy check).\r\n"},
    {25, "The drive cannot locate a specific area or track on the disk.\r\n"},
    {27, "The drive cannot find the sector requested.\r\n"},
    {29, "The system cannot write to the specified device.\r\n"},
    {30, "The system cannot read from the specified device.\r\n"},
    {31, "A device attached to the system is not functioning.\r\n"},
    {32, "The process cannot access the file because it is being used by another process.\r\n"},
    {33,
     "The process cannot access the file because another process has locked a portion of the "
     "file.\r\n"},
    {36, "Too many files opened for sharing.\r\n"},
    {39, "The disk is full.\r\n"},
    {50, "The request is not supported.\r\n"},
    {51,
     "Windows cannot find the network path. Verify that the network path is correct and the "
     "destination computer is not busy or turned off. If Windows still cannot find the network "
     "path, contact your network administrator.\r\n"},
    {80, "The file exists.\r\n"},
    {82, "The directory or file cannot be created.\r\n"},
    {87, "The parameter is incorrect.\r\n"},
    {89, "The system cannot start another process at this time.\r\n"},
    {109, "The pipe has been ended.\r\n"},
    {110, "The system cannot open the device or file specified.\r\n"},
    {111, "The file name is too long.\r\n"},
    {112, "There is not enough space on the disk.\r\n"},
    {113, "No more internal file identifiers available.\r\n"},
    {120, "This function is not supported on this system.\r\n"},
    {122, "The data area passed to a system call is too small.\r\n"},
    {123, "The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {127, "The specified procedure could not be found.\r\n"},
    {128, "There are no child processes to wait for.\r\n"},
    {129, "The %1 application cannot be run in Win32 mode.\r\n"},
    {131, "An attempt was made to move the file pointer before the beginning of the file.\r\n"},
    {145, "The directory is not empty.\r\n"},
    {161, "The specified path is invalid.\r\n"},
    {164, "No more threads can be created in the system.\r\n"},
    {167, "Unable to lock a region of a file.\r\n"},
    {170, "The requested resource is in use.\r\n"},
    {183, "Cannot create a file when that file already exists.\r\n"},
    {193, "%1 is not a valid Win32 application.\r\n"},
    {206, "The filename or extension is too long.\r\n"},
    {230, "The pipe state is invalid.\r\n"},
    {231, "All pipe instances are busy.\r\n"},
    {232, "The pipe is being closed.\r\n"},
    {233, "No process is on the other end of the pipe.\r\n"},
    {267, "The directory name is invalid.\r\n"},
    {487, "Attempt to access invalid address.\r\n"},
    {998, "Invalid access to memory location.\r\n"},
    {2401, "This network connection has files open or requests pending.\r\n"},
    {2402, "Active connections still exist.\r\n"},
    {2404, "The device is in use by an active process and cannot be disconnected.\r\n"},
};

}  // namespace

const char* oru_win32_message_text(uint32_t number) {
  size_t low = 0;
  size_t high = sizeof kWin32Texts / sizeof kWin32Texts[0];
  while (low < high) {
    size_t middle = low + (high - low) / 2;
    if (kWin32Texts[middle].number < number) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  if (low < sizeof kWin32Texts / sizeof kWin32Texts[0] && kWin32Texts[low].number == number) {
    return kWin32Texts[low].text;
  }
  return nullptr;
}
