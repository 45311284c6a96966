// IBRTTISupport: the identity side of an object. QueryVisitor: an observer of a query's walk.
#pragma once

#include "core/baselib/identity/Identity.h"

namespace corvix {

// Watches a walk over an object's classes; for diagnostics.
class QueryVisitor {
 public:
  // The walk arrived at a class, `object` is the object as that class sees it. Called before the comparison.
  virtual void enter(const stype_info& info, void* object) = 0;
  // The walk backs out of the class entered last that is still open. Not called after a hit.
  virtual void leave() = 0;

 protected:
  ~QueryVisitor() = default;
};

// Inherited virtually, once per object. Not among the classes that a query visits.
class IBRTTISupport {
  CORVIX_IDENTITY_ROOT(IBRTTISupport, 0x6C1B0A35, 0x49D74E02, 0x9F3BC8A1, 0x20D4E7F6)

 public:
  // The identifier of the object's most derived class.
  virtual const stype_info& typeInfo() const noexcept = 0;

  // The object as the wanted class sees it, or null when it is not one. Adds no reference. `visitor` may be null.
  virtual void* query(const stype_info& wanted, QueryVisitor* visitor = nullptr) = 0;
  CORVIX_IDENTITY_QUERY

 protected:
  ~IBRTTISupport() = default;
};

}  // namespace corvix
