// SPDX-License-Identifier: MIT
// The whole library in one header.
#pragma once

#include "knotwork/geometry/number_sequence.h"
#include "knotwork/geometry/tuple_matrix.h"
#include "knotwork/geometry/tuple_vector.h"
#include "knotwork/geometry/vert_data_index_table.h"
#include "knotwork/geometry/vert_index_table.h"
#include "knotwork/kernel/ag_rw.h"
#include "knotwork/kernel/surface_direction.h"
#include "knotwork/matrix/double_gen_mat.h"
#include "knotwork/matrix/int_gen_mat.h"
#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/double_vec_pick.h"
#include "knotwork/vector/int_vec.h"
#include "knotwork/vector/int_vec_pick.h"
#include "knotwork/vector/math_codes.h"
#include "knotwork/vector/math_error.h"
#include "knotwork/vector/math_messages.h"
#include "knotwork/vector/rw_block.h"
#include "knotwork/vector/schar_vec.h"
#include "knotwork/vector/schar_vec_pick.h"
