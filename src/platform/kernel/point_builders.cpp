// SPDX-License-Identifier: MIT
// Kernel stand-in: lists and arrays of points.
#include "knotwork/platform/kernel/builders.h"
#include "nodes.h"

ag_cp_list* ag_bld_cp_list(int dim, int count, const double* points) {
  if (dim < 0 || count < 0) return nullptr;
  ag_cp_list* const list = knotwork::detail::newRecord<ag_cp_list>();
  if (!list) return nullptr;
  *list = {dim, count, nullptr};
  if (knotwork::detail::buildPoints(&list->first, count, dim, points)) return list;
  ag_rel_cp_list(list);
  return nullptr;
}

ag_sp_array* ag_bld_sp_array(int dim, int rows, int cols, const double* points) {
  if (dim < 0 || rows < 0 || cols < 0) return nullptr;
  ag_sp_array* const array = knotwork::detail::newRecord<ag_sp_array>();
  if (!array) return nullptr;
  *array = {dim, rows, cols, nullptr};
  if (cols == 0 || knotwork::detail::buildGrid(&array->first, rows, cols, dim, points))
    return array;
  ag_rel_sp_array(array);
  return nullptr;
}

void ag_rel_cp_list(ag_cp_list* list) {
  if (list) knotwork::detail::releasePoints(list->first);
  std::free(list);
}

void ag_rel_sp_array(ag_sp_array* array) {
  if (array) knotwork::detail::releaseGrid(array->first);
  std::free(array);
}
