// SPDX-License-Identifier: MIT
// Foundation stand-in: the exception of exhausted memory.
#pragma once

#include "knotwork/platform/foundation/exception.h"

/// Thrown when memory runs out. Its own record is TmemoryExceptionTmeta.
class KNOTWORK_FOUNDATION_API TmemoryException : public Texception {
 public:
  TmemoryException();
  TmemoryException(const TmemoryException&);
  TmemoryException& operator=(const TmemoryException&);

  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  Texception* cache() override;
  ~TmemoryException() override;
};

/// Record of TmemoryException: parent TexceptionTmeta, no factory.
extern KNOTWORK_FOUNDATION_API Tmetaclass TmemoryExceptionTmeta;
