#pragma once

#include "component/ZYMListValQELXIVARDOSLRDObject_var.h"

/// An ordered list of records, positions from 1. Null handles may be in it.
class ZYM_EXPORT QELXIVARDOSLRDObject_varList : public ZYMListValQELXIVARDOSLRDObject_var {
 public:
  using ZYMListValQELXIVARDOSLRDObject_var::ZYMListValQELXIVARDOSLRDObject_var;

  /// By QELXIVARDOSLRDObject_varSortCompare; stable.
  void Sort();
};

/// Null before any record; then by CAD id, physical id, hash code. Negative, 0 or positive.
ZYM_EXPORT int QELXIVARDOSLRDObject_varSortCompare(const QELXIVARDOSLRDObject_var& a,
                                                   const QELXIVARDOSLRDObject_var& b);
