#include "platform/QELVARDOSFileLayer.h"

#include <utility>

namespace {

/// Set by the host, or by a test, before the module works; not guarded against a change while another thread uses it.
QELVARDOSFileLayer* layerInUse = nullptr;

}  // namespace

QELVARDOSFileLayer::~QELVARDOSFileLayer() = default;

void QELVARDOSFileLayer::BeginLookups() {}

void QELVARDOSFileLayer::EndLookups() {}

void QELVARDOSFileLayer::Replaced(const std::string& /*path*/, QELVARDOSReplacement /*outcome*/,
                                  const std::error_code& /*error*/) {}

QELVARDOSFileLayer& QELVARDOSFileLayer::Current() { return layerInUse == nullptr ? System() : *layerInUse; }

QELVARDOSFileLayer* QELVARDOSFileLayer::Use(QELVARDOSFileLayer* layer) { return std::exchange(layerInUse, layer); }
