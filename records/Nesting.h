#pragma once

/// How deep a record may stand below the document's own, which has depth 0. What is nested deeper is neither read nor
/// written, so that whatever was written can be read.
inline constexpr int DeepestNesting = 256;
