// SPDX-License-Identifier: MIT
// Foundation stand-in: root of the exceptions that carry a run-time type.
//
// `typeof` is a keyword of the GNU dialects: sources that include this header are compiled in an
// ISO mode (-std=c++20) or with -fno-gnu-keywords, which the library's build interface passes on.
#pragma once

#include "knotwork/platform/foundation/export.h"
#include "knotwork/platform/foundation/metaclass.h"

/// Root of the exception classes. Its own record is TexceptionTmeta.
class KNOTWORK_FOUNDATION_API Texception {
 public:
  Texception();
  Texception(const Texception&);
  Texception& operator=(const Texception&);

  /// @return the record of the object's class.
  virtual Tmetaclass* typeof() const;

  /// @return this object as the class whose record is given, or null if it is not of that class.
  virtual void* cast(Tmetaclass* type);

  /// Copies the exception to a place that outlives the handler.
  /// @return the process-wide copy, valid until the next exception of this class is cached.
  virtual Texception* cache();

  virtual ~Texception();
};

/// Record of Texception: no parents, no factory.
extern KNOTWORK_FOUNDATION_API Tmetaclass TexceptionTmeta;
