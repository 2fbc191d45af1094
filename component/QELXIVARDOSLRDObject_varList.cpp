#include "component/QELXIVARDOSLRDObject_varList.h"

#include "component/QELXIVARDOSLRDObject.h"

void QELXIVARDOSLRDObject_varList::Sort() { QuickSort(QELXIVARDOSLRDObject_varSortCompare); }

int QELXIVARDOSLRDObject_varSortCompare(const QELXIVARDOSLRDObject_var& a, const QELXIVARDOSLRDObject_var& b) {
  if (a.IsNull() || b.IsNull()) {
    return static_cast<int>(b.IsNull()) - static_cast<int>(a.IsNull());
  }
  if (const int order = a->GetCadId().SortCompare(b->GetCadId()); order != 0) {
    return order;
  }
  if (const int order = a->GetPhysicalId().SortCompare(b->GetPhysicalId()); order != 0) {
    return order;
  }
  return a->GetHashcode().SortCompare(b->GetHashcode());
}
