// SPDX-License-Identifier: MIT
//
// The inverses of geometry/matrix_inverse.h in lanes, with the same operations on each element.
// Where a plain inverse swaps rows, each lane swaps its own.
#pragma once

#include <cstddef>

namespace korvalite::core::lanes {

template <typename Lanes>
[[gnu::always_inline]] inline void swapWhere(typename Lanes::Mask swaps, typename Lanes::Doubles& a,
                                             typename Lanes::Doubles& b) {
    const typename Lanes::Doubles kept = a;
    a = Lanes::select(swaps, b, a);
    b = Lanes::select(swaps, kept, b);
}

/// A row during elimination: the matrix, the right half below the diagonal, and the number of the
/// row in the original matrix.
template <typename Lanes, std::size_t kSize>
struct EliminationRow {
    typename Lanes::Doubles a[kSize];
    typename Lanes::Doubles b[kSize - 1];
    typename Lanes::Doubles source;
};

/// Moves the row with the larger element in `column` up; on a tie, keeps the order.
template <typename Lanes, std::size_t kSize>
[[gnu::always_inline]] inline void orderRows(EliminationRow<Lanes, kSize>& upper,
                                             EliminationRow<Lanes, kSize>& lower,
                                             std::size_t column) {
    const typename Lanes::Mask swaps =
        Lanes::greater(Lanes::absolute(lower.a[column]), Lanes::absolute(upper.a[column]));
    for (std::size_t i = column; i < kSize; ++i)
        swapWhere<Lanes>(swaps, upper.a[i], lower.a[i]);
    for (std::size_t i = 0; i < column; ++i)
        swapWhere<Lanes>(swaps, upper.b[i], lower.b[i]);
    swapWhere<Lanes>(swaps, upper.source, lower.source);
}

/// Subtracts a multiple of the pivot row, which clears `column`.
template <typename Lanes, std::size_t kSize>
[[gnu::always_inline]] inline void eliminate(EliminationRow<Lanes, kSize>& row,
                                             const EliminationRow<Lanes, kSize>& pivotRow,
                                             std::size_t column) {
    using Doubles = typename Lanes::Doubles;
    const Doubles zero = Lanes::splat(0.0);
    const Doubles factor = row.a[column] / pivotRow.a[column];
    for (std::size_t i = column + 1; i < kSize; ++i)
        row.a[i] = row.a[i] - factor * pivotRow.a[i];
    for (std::size_t i = 0; i < column; ++i) {
        // An infinite factor times 0 is NaN.
        row.b[i] = Lanes::select(Lanes::equal(pivotRow.b[i], zero), row.b[i],
                                 row.b[i] - factor * pivotRow.b[i]);
    }
    row.b[column] = zero - factor;
}

/// The rows of a matrix after elimination, each with its pivot at its own column. Returns where a
/// pivot is exactly 0.
template <typename Lanes, std::size_t kSize>
[[gnu::always_inline]] inline typename Lanes::Mask
eliminateAll(const typename Lanes::Doubles* matrix, EliminationRow<Lanes, kSize>* rows) {
    using Mask = typename Lanes::Mask;
    const typename Lanes::Doubles zero = Lanes::splat(0.0);
    for (std::size_t r = 0; r < kSize; ++r) {
        for (std::size_t c = 0; c < kSize; ++c)
            rows[r].a[c] = matrix[kSize * r + c];
        rows[r].source = Lanes::splat(static_cast<double>(r));
    }
    Mask isSingular = Lanes::greater(zero, zero);
    for (std::size_t column = 0; column < kSize; ++column) {
        for (std::size_t r = kSize - 1; r > column; --r)
            orderRows<Lanes, kSize>(rows[r - 1], rows[r], column);
        isSingular = Lanes::either(isSingular, Lanes::equal(rows[column].a[column], zero));
        for (std::size_t r = column + 1; r < kSize; ++r)
            eliminate<Lanes, kSize>(rows[r], rows[column], column);
    }
    return isSingular;
}

/// The columns of the inverse, top to bottom; column k belongs to the row of pivot k.
template <typename Lanes, std::size_t kSize>
[[gnu::always_inline]] inline void solveColumns(const EliminationRow<Lanes, kSize>* rows,
                                                typename Lanes::Doubles (*columns)[kSize]) {
    using Doubles = typename Lanes::Doubles;
    const Doubles zero = Lanes::splat(0.0);
    const Doubles one = Lanes::splat(1.0);
    Doubles reciprocals[kSize];
    for (std::size_t r = 0; r < kSize; ++r)
        reciprocals[r] = one / rows[r].a[r];
    for (std::size_t pivot = 0; pivot < kSize; ++pivot) {
        Doubles* const column = columns[pivot];
        for (std::size_t r = kSize; r-- > 0;) {
            Doubles value = r < pivot ? zero : r == pivot ? one : rows[r].b[pivot];
            for (std::size_t c = kSize; c-- > r + 1;)
                value = value - rows[r].a[c] * column[c];
            column[r] = value * reciprocals[r];
        }
    }
}

/// Sorts what belongs to the rows of the pivots by those rows' numbers: sorted[j] is the value
/// whose row was row j.
template <typename Lanes, std::size_t kSize>
[[gnu::always_inline]] inline void sortBySource(const EliminationRow<Lanes, kSize>* rows,
                                                const typename Lanes::Doubles* values,
                                                typename Lanes::Doubles* sorted) {
    for (std::size_t j = 0; j < kSize; ++j) {
        const typename Lanes::Doubles number = Lanes::splat(static_cast<double>(j));
        sorted[j] = values[kSize - 1];
        for (std::size_t k = 0; k + 1 < kSize; ++k) {
            sorted[j] = Lanes::select(Lanes::equal(rows[k].source, number), values[k], sorted[j]);
        }
    }
}

/// The whole inverse of a 3x3 matrix, row-major. Returns where there is none.
template <typename Lanes>
[[gnu::always_inline]] inline typename Lanes::Mask invert3(const typename Lanes::Doubles* matrix,
                                                           typename Lanes::Doubles* inverse) {
    EliminationRow<Lanes, 3> rows[3];
    const typename Lanes::Mask isSingular = eliminateAll<Lanes, 3>(matrix, rows);
    typename Lanes::Doubles columns[3][3];
    solveColumns<Lanes, 3>(rows, columns);
    for (std::size_t r = 0; r < 3; ++r) {
        const typename Lanes::Doubles values[3] = {columns[0][r], columns[1][r], columns[2][r]};
        sortBySource<Lanes, 3>(rows, values, inverse + 3 * r);
    }
    return isSingular;
}

}  // namespace korvalite::core::lanes
