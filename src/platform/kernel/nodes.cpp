// SPDX-License-Identifier: MIT
// Kernel stand-in: lists and grids of nodes. Memory comes from calloc, and each link is set as soon
// as its node is made: what was begun when memory ran out can be released by the same walk.
#include "nodes.h"

#include "knotwork/platform/kernel/accessors.h"
#include "knotwork/platform/kernel/builders.h"

namespace knotwork::detail {

namespace {

template <class Node>
Node* newPoint(int size, const double* point) {
  Node* const node = newRecord<Node>();
  if (!node) return nullptr;
  node->p = ag_al_dbl(size);
  if (!node->p && size > 0) {
    std::free(node);
    return nullptr;
  }
  if (point) ag_V_copy(point, node->p, size);
  return node;
}

}  // namespace

bool buildPoints(ag_cnode** link, int count, int size, const double* points) {
  for (int i = 0; i < count; ++i, link = &(*link)->next) {
    if (!(*link = newPoint<ag_cnode>(size, points))) return false;
    if (points) points += size;
  }
  return true;
}

// Every node of a row links to the head of the next one; the heads alone own the rows.
bool buildGrid(ag_snode** link, int rows, int cols, int size, const double* points) {
  ag_snode* previousRow = nullptr;
  for (int i = 0; i < rows; ++i) {
    ag_snode** along = previousRow ? &previousRow->nextU : link;
    for (int j = 0; j < cols; ++j, along = &(*along)->nextV) {
      if (!(*along = newPoint<ag_snode>(size, points))) return false;
      if (points) points += size;
    }
    ag_snode* const head = previousRow ? previousRow->nextU : *link;
    for (ag_snode* node = previousRow; node; node = node->nextV) node->nextU = head;
    previousRow = head;
  }
  return true;
}

bool setKnot(double** cell, double* predecessor, double value) {
  *cell = predecessor && *predecessor == value ? predecessor : ag_al_dbl(1);
  if (!*cell) return false;
  **cell = value;
  return true;
}

void releasePoints(ag_cnode* node) {
  while (node) {
    ag_cnode* const next = node->next;
    std::free(node->p);
    std::free(node);
    node = next;
  }
}

void releaseGrid(ag_snode* row) {
  while (row) {
    ag_snode* const nextRow = row->nextU;
    for (ag_snode* node = row; node;) {
      ag_snode* const next = node->nextV;
      std::free(node->p);
      std::free(node);
      node = next;
    }
    row = nextRow;
  }
}

}  // namespace knotwork::detail

double* ag_al_dbl(int n) {
  return n < 1 ? nullptr
               : static_cast<double*>(std::calloc(static_cast<std::size_t>(n), sizeof(double)));
}
