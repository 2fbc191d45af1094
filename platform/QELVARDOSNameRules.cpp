#include "platform/QELVARDOSNameRules.h"

#include <algorithm>
#include <array>
#include <string>

namespace QELVARDOSNameRules {

namespace {

constexpr std::string_view PosixSeparators = "/";
constexpr std::string_view WindowsSeparators = "/\\";
constexpr std::string_view DotsAndBlanks = ". ";

/// Takes the first component off a path, with the separator behind it.
std::string_view TakeComponent(std::string_view& path, std::string_view separators) {
  const std::size_t end = path.find_first_of(separators);
  const std::string_view component = path.substr(0, end);
  path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
  return component;
}

/// The first refusal of a component of name; judge answers it for one.
template <typename Judge>
Refusal FirstRefusal(std::string_view name, std::string_view separators, const Judge& judge) {
  Refusal refusal = Refusal::None;
  while (refusal == Refusal::None && !name.empty()) {
    refusal = judge(TakeComponent(name, separators));
  }
  return refusal;
}

/// What stands behind the first component that is the record folder; nothing where none is.
template <typename IsRecordFolder>
std::string_view Behind(std::string_view path, std::string_view separators, const IsRecordFolder& isRecordFolder) {
  while (!path.empty()) {
    if (isRecordFolder(TakeComponent(path, separators))) {
      return path;
    }
  }
  return path;
}

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool EqualInAnyCase(std::string_view a, std::string_view b) { return std::ranges::equal(a, b, {}, Upper, Upper); }

bool IsLetter(char c) { return Upper(c) >= 'A' && Upper(c) <= 'Z'; }

bool StartsWithDrive(std::string_view component) {
  return component.size() > 1 && IsLetter(component[0]) && component[1] == ':';
}

std::string_view WithoutEnding(std::string_view component, std::string_view dropped) {
  return component.substr(0, component.find_last_not_of(dropped) + 1);
}

/// A device answers to its name with any extension, and with blanks before that.
bool IsDevice(std::string_view component) {
  const std::string_view stem = WithoutEnding(component.substr(0, component.find('.')), " ");
  constexpr std::array<std::string_view, 6> Devices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
  if (std::ranges::any_of(Devices, [stem](std::string_view device) { return EqualInAnyCase(stem, device); })) {
    return true;
  }
  // A port has a digit, the raised ones among them.
  constexpr std::array<std::string_view, 12> Digits = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "¹", "²", "³"};
  const std::string_view port = stem.substr(0, 3);
  return (EqualInAnyCase(port, "COM") || EqualInAnyCase(port, "LPT")) &&
         std::ranges::find(Digits, stem.substr(3)) != Digits.end();
}

bool IsForbiddenOnWindows(char c) {
  return static_cast<unsigned char>(c) < ' ' || std::string_view("<>\"|?*").find(c) != std::string_view::npos;
}

Refusal WindowsComponent(std::string_view component) {
  if (std::ranges::any_of(component, IsForbiddenOnWindows)) {
    return Refusal::ForbiddenCharacter;
  }
  if (StartsWithDrive(component)) {
    return Refusal::Drive;
  }
  if (component.find(':') != std::string_view::npos) {
    return Refusal::Stream;
  }
  const std::string_view kept = WithoutEnding(component, DotsAndBlanks);
  if (kept.empty() && component.find('.') != std::string_view::npos) {
    return Refusal::OtherFolder;
  }
  if (IsDevice(component)) {
    return Refusal::Device;
  }
  return kept.size() == component.size() ? Refusal::None : Refusal::Ending;
}

}  // namespace

std::string_view Reason(Refusal refusal) {
  switch (refusal) {
    case Refusal::None:
      break;
    case Refusal::OtherFolder:
      return "leads to another folder";
    case Refusal::Drive:
      return "names a drive";
    case Refusal::Stream:
      return "names a stream of another file";
    case Refusal::Device:
      return "names a device";
    case Refusal::Ending:
      return "ends in a dot or a blank";
    case Refusal::ForbiddenCharacter:
      return "has a character that no name can have";
  }
  return {};
}

Refusal PosixName(std::string_view name) {
  return FirstRefusal(name, PosixSeparators, [](std::string_view component) {
    return component == ".." ? Refusal::OtherFolder : Refusal::None;
  });
}

Refusal WindowsName(std::string_view name) { return FirstRefusal(name, WindowsSeparators, WindowsComponent); }

Refusal PosixPath(std::string_view path, std::string_view recordFolder) {
  // Hardly any path can be refused, so most are not taken apart.
  if (path.find("..") == std::string_view::npos) {
    return Refusal::None;
  }
  return PosixName(
      Behind(path, PosixSeparators, [recordFolder](std::string_view component) { return component == recordFolder; }));
}

Refusal WindowsPath(std::string_view path, std::string_view recordFolder) {
  // What stands before the folder is taken as given, and the folder itself is whatever the system takes for it.
  if (StartsWithDrive(path)) {
    path.remove_prefix(2);
  }
  return WindowsName(Behind(path, WindowsSeparators, [recordFolder](std::string_view component) {
    return EqualInAnyCase(WithoutEnding(component, DotsAndBlanks), recordFolder);
  }));
}

}  // namespace QELVARDOSNameRules
