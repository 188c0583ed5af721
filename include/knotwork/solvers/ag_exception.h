// SPDX-License-Identifier: MIT
// The error codes of the host's spline kernel as exceptions.
//
// `typeof` is a keyword of the GNU dialects: include this header in an ISO mode (-std=c++20) or
// with -fno-gnu-keywords, which the library's build interface passes on.
#pragma once

#include "knotwork/export.h"
#include "knotwork/platform/foundation/exception.h"

/// Thrown for an error of the host's spline kernel other than exhausted memory. Its own record is
/// TagExceptionTmeta.
class KNOTWORK_API TagException : public Texception {
 public:
  /// @param code  the error code of the host's spline kernel.
  explicit TagException(int code);
  TagException(const TagException& other);
  TagException& operator=(const TagException& other);

  /// @return the error code of the host's spline kernel.
  int errorCode() const;

  /// @return TagExceptionTmeta.
  Tmetaclass* typeof() const override;
  /// @return this object if `type` is TagExceptionTmeta, else what Texception makes of `type`.
  void* cast(Tmetaclass* type) override;
  /// Copies this exception into the one that the library keeps, so that it outlives its handler.
  /// @return the kept exception, valid until the next one is cached.
  Texception* cache() override;
  ~TagException() override;

  /// @return a new object of the class that `type` records, as its factory makes it; null if that
  /// is null, has no factory or does not derive from TagException.
  static void* construct(Tmetaclass* type);

 private:
  int errorCode_;
};

/// Record of TagException: parent TexceptionTmeta, no factory.
extern KNOTWORK_API Tmetaclass TagExceptionTmeta;

extern "C" {

/// Turns an error code of the host's spline kernel into an exception; does not return.
///
/// @param code  902 throws a TmemoryException, any other code a TagException that carries it.
[[noreturn]] KNOTWORK_API void AG_raiseException(int code);

}  // extern "C"
