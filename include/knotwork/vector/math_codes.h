// SPDX-License-Identifier: MIT
// Names of the error codes of the linear-algebra layer; math_messages.h holds their texts.
#pragma once

namespace knotwork {

/// Error codes: the top 4 of 16 bits name the catalogue, the low 12 the message in it.
enum MathCode : int {
  kNoError = 0,

  // Catalogue 3: vectors and general. Every message begins with the reporting class's name.
  kBadOrder = 0x3000,
  kBadParity,
  kBadVersion,
  kDivideByZero,
  kGeneric,
  kIndexOutOfRange,
  kUndefinedLu,
  kShapeMismatch,
  kOutOfMemory,
  kTooFewPoints,
  kNotSquare,
  kBlockRequest,
  kBadSlice,
  kStrideNotOne,
  kVectorMatrixMismatch,
  kLengthMismatch,
  kZeroDeviation,
  kEmptyVector,
  kZeroPivot,
  kZerothRoot,

  // Catalogue 4: matrices.
  kMatrixInternal = 0x4000,
  kPickOutOfRange,
  kConstantChanged,
  kComplexConstantChanged,
  kMatrixSizesDiffer,
  kNoSuchElement,
  kNoSuchRow,
  kNoSuchColumn,
  kNoSuchDiagonal,
  kElementNotStored,
  kWrongPointCount,
  kWrongBandPointCount,
  kBandwidthsDiffer,
  kMatrixNotSquare,
  kNotSymmetric,
  kNotAntiSymmetric,
  kNotHermitian,
  kNotBanded,
  kNotTriangular,
  kNotTriDiagonal,
  kNoMatrixVectorProduct,
  kNoVectorMatrixProduct,
  kNoMatrixProduct,
  kWrongElementCount,
  kNoLeadingSubmatrix,
  kWrongStoredLength,

  // Catalogue 5: factorisations.
  kFactorInternal = 0x5000,
  kNoConditionNumber,
  kRhsLengthWrong,
  kDiagonalNotReal,
  kPermuteLengthWrong,
  kBadShiftDirection,
  kBadShiftColumns,
  kDataHeightWrong,
  kRotationLengthWrong,
  kResidualCountWrong,
  kNotPositiveDefinite,
  kNoSuchData,
  kPointerStrideNotOne,
  kFactorNotSquare,
  kBandwidthTooBig,
  kAlreadyFactored,
  kFewerRowsThanColumns,
  kNotFactored,
  kBadPivotPosition,
};

}  // namespace knotwork
