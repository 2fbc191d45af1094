#pragma once

#include <string>
#include <system_error>
#include <vector>

/// As QELVARDOSFileLayer::MakeDurable.
std::vector<std::error_code> MakeContentDurable(const std::vector<std::string>& paths);

/// As QELVARDOSFileLayer::MakeFoldersDurable.
std::vector<std::error_code> MakeEntriesDurable(const std::vector<std::string>& folders);
