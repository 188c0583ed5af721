// SPDX-License-Identifier: MIT
// The three message catalogues, the list they are registered in, and their counted initialisers.
// The order of the messages is that of knotwork::MathCode; the texts are output, odd spellings too.
#include "knotwork/vector/math_messages.h"

#include <iterator>

#include "vector/severity.h"

namespace {

using knotwork::detail::kFatal;
using knotwork::detail::kWarning;

constexpr MathMessageEntry vectorMessages[] = {
    {kFatal, "[BADORDER: %s]: Mismatch of function (%u) and rhs (%u) order"},
    {kFatal, "[BADPARITY: %s]: Length (%u) of a real series must be %s"},
    {kFatal, "[BADVERNO: %s]: Bad formatting version number.  Expected %d; got %d"},
    {kFatal, "[DIVZERO: %s]: Divide by zero."},
    {kFatal, "[GENERIC: %s]: Generic error number %d; %s"},
    {kFatal, "[INDEX: %s]: Index (%d) out of range [0->%u]"},
    {kFatal, "[LUNDEF: %s]: Undefined LU factorization"},
    {kFatal, "[MNMATCH: %s]: Rows or columns do not match: (%u, %u) vs (%u, %u)"},
    {kFatal, "[NOMEM: %s]: Out of memory"},
    {kFatal, "[NPOINTS: %s]: Vector (%u) %s %d"},
    {kFatal, "[NSQUARE: %s]: Matrix (%u, %u) is not square"},
    {kFatal, "[RWBREQ: %s]: RWBlock new request of size %d != correct: %d"},
    {kFatal, "[SLICE: %s]: slice (%d, %u, %d) cannot be made from vector (%u)"},
    {kFatal, "[STRIDE: %s]: Stride must be 1"},
    {kFatal, "[VMNMATCH: %s]: %s Vector (%u) does not match matrix: (%u, %u)"},
    {kFatal, "[VNMATCH: %s]: Vector lengths do not match (%u vs %u)"},
    {kWarning, "[ZEROSD: %s]: Series has zero standard deviation"},
    {kWarning, "[ZEROVEC: %s]: %s: vector is empty"},
    {kFatal, "[ZPIVOT: %s]: Pivot number %d is zero"},
    {kFatal, "[BADROOT: %s]: Zero'th root of 1 requested"},
};

constexpr MathMessageEntry matrixMessages[] = {
    {kWarning, "Internal error, you've found a bug"},
    {kFatal, "Matrix pick out of range: index %d not in 0->%d"},
    {kFatal, "Constant reference was changed from %g to %g"},
    {kFatal, "Complex constant reference was changed from %g+i%g to %g+i%g"},
    {kFatal, "Matrix sizes don't match (%dx%d) vs (%dx%d)"},
    {kFatal, "Element (%dx%d) not in matrix of size (%ux%u)"},
    {kFatal, "Row (%d) not in matrix with %u rows"},
    {kFatal, "Column (%d) not in matrix with %u columns"},
    {kFatal, "Diagonal %d not in %s matrix of size (%ux%u)"},
    {kFatal, "Can't change element (%d,%d) of %s"},
    {kFatal, "Wrong number of points (%u) for %ux%u %s"},
    {kFatal, "Wrong number of points (%u) for %ux%u %s with bandwidth %u"},
    {kFatal, "Bandwidths don't match: lower: %u & %u, upper: %u & %u"},
    {kFatal, "%dx%d matrix not square"},
    {kWarning, "matrix not symmetric"},
    {kWarning, "matrix not anti-symmetric"},
    {kWarning, "matrix not hermetian"},
    {kWarning, "matrix not banded"},
    {kWarning, "matrix not triangular"},
    {kWarning, "matrix not tri-diagonal"},
    {kFatal, "inner product not possible between %s (%ux%u) and vector (%u)"},
    {kFatal, "inner product not possible vector(%u) and %s (%ux%u)"},
    {kFatal, "inner product not possible %s matrices (%u,%u) and (%ux%u)"},
    {kFatal, "wrong number of elements (%u) for %s (%ux%u)"},
    {kFatal, "cant build order %u leading submatrix of order %u matrix"},
    {kFatal, "Restoring %s, data vector len %d, expected %u"},
};

constexpr MathMessageEntry factorMessages[] = {
    {kWarning, "Internal error, you've found a bug"},
    {kWarning, "Condition number not calculated"},
    {kFatal, "b vector length wrong (%u!=%u)"},
    {kWarning, "diagonal of Hermetian matrix being factorized is non-real"},
    {kFatal, "vector wrong length to permute (%u!=%u)"},
    {kFatal, "Invalid Cholesky shift direction"},
    {kFatal, "Invalid Cholesky shift columns (%d,%d)"},
    {kFatal, "Data matrix wrong height (%u!=%u)"},
    {kFatal, "Vector to hold sines or cosines wrong length (%u!=%u)"},
    {kFatal, "Different number of residuals than data columns (%u!=%u)"},
    {kFatal, "Internal error: The normal equations are not positive definite"},
    {kFatal, "Data %d doesn't exist, only %d data columns"},
    {kFatal, "vec pointers must have stride == 1"},
    {kFatal, "Can't factorize, %ux%u matrix not square"},
    {kFatal, "Can't factorize, bandwidth %d too big for %dx%d matrix"},
    {kWarning, "Called factor, but a factorization has already been computed"},
    {kFatal, "Matrix must have more rows than cols to be factorizable, but %d<%d"},
    {kFatal, "Can't solve system of equations, matrix not successfully factorized"},
    {kFatal, "Pivoting position specifier must be INITIAL,FREE, or FINAL, not %d"},
};

// A catalogue and the number of initialisers that keep it registered: several static objects may
// need its texts, and are destroyed in whatever order.
struct CountedCatalogue {
  MathMessageCatalogue catalogue;
  unsigned short users = 0;

  void acquire() {
    if (users++ == 0) registerCatalogue(catalogue);
  }
  void release() {
    if (--users == 0) unregisterCatalogue(catalogue.id);
  }
};

// Made by the compiler, so that they are there before the first static constructor reports.
constinit CountedCatalogue vectorCatalogue{{3, vectorMessages, std::size(vectorMessages), nullptr}};
constinit CountedCatalogue matrixCatalogue{{4, matrixMessages, std::size(matrixMessages), nullptr}};
constinit CountedCatalogue factorCatalogue{{5, factorMessages, std::size(factorMessages), nullptr}};

constinit MathMessageCatalogue* firstCatalogue = nullptr;

}  // namespace

const MathMessageEntry* findMathMessage(unsigned short code) {
  const MathMessageCatalogue* catalogue = firstCatalogue;
  while (catalogue != nullptr && catalogue->id != unsigned{code} >> 12) catalogue = catalogue->next;
  if (catalogue == nullptr || catalogue->entries == nullptr) return nullptr;
  return catalogue->entries + (code & 0x0FFF);
}

// At the end, so that of two catalogues with one identifier the earlier one answers; and once
// only, since a second time would close the list to a ring.
void registerCatalogue(MathMessageCatalogue& catalogue) {
  MathMessageCatalogue** link = &firstCatalogue;
  for (; *link != nullptr; link = &(*link)->next) {
    if (*link == &catalogue) return;
  }
  catalogue.next = nullptr;
  *link = &catalogue;
}

void unregisterCatalogue(unsigned id) {
  MathMessageCatalogue** link = &firstCatalogue;
  while (*link != nullptr && (*link)->id != id) link = &(*link)->next;
  if (*link == nullptr) return;
  MathMessageCatalogue* removed = *link;
  *link = removed->next;
  removed->next = nullptr;
}

VectorMessagesInit::VectorMessagesInit() { vectorCatalogue.acquire(); }
VectorMessagesInit::~VectorMessagesInit() { vectorCatalogue.release(); }

RWMATXInit::RWMATXInit() { matrixCatalogue.acquire(); }
RWMATXInit::~RWMATXInit() { matrixCatalogue.release(); }

FactorMessagesInit::FactorMessagesInit() { factorCatalogue.acquire(); }
FactorMessagesInit::~FactorMessagesInit() { factorCatalogue.release(); }
