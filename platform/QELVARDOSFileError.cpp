#include "platform/QELVARDOSFileError.h"

#include <string>

namespace {

class FileErrors final : public std::error_category {
 public:
  const char* name() const noexcept override { return "file"; }
  std::string message(int value) const override {
    switch (static_cast<QELVARDOSFileError>(value)) {
      case QELVARDOSFileError::OwnerWouldLoseAccess:
        return "Its owner would lose access to it";
      case QELVARDOSFileError::ForeignLink:
        return "Its folder is a link that somebody else made";
      case QELVARDOSFileError::MayBeLost:
        return "It is as it should be, but a loss of power may undo that";
      case QELVARDOSFileError::ChangedMeanwhile:
        return "Changed while it was looked at";
      case QELVARDOSFileError::LeavesFolder:
        return "The name leads out of the record folder";
    }
    return "Unknown error";
  }
};

}  // namespace

std::error_code make_error_code(QELVARDOSFileError error) {
  static const FileErrors Category;
  return {static_cast<int>(error), Category};
}
