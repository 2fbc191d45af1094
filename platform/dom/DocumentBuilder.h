#pragma once

#include "platform/ZYMIDOM.h"

namespace ZYMDom {

/// A builder of trees that pugixml makes and holds. As pugixml is too lenient a judge, it sees only what is plain or
/// what expat accepts.
HRESULT MakeDocumentBuilder(ZYMIXMLDOMDocumentBuilder_var& builder);

}  // namespace ZYMDom
