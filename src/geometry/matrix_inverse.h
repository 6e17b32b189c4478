// SPDX-License-Identifier: MIT
//
// Exact inverses of 3x3 and 4x4 matrices by elimination with partial pivoting.
//
// COMPAT: only a pivot of exactly 0 fails; a tolerance would change which edges collapse.
// So a tiny pivot passes, and a NaN pivot passes and gives NaN results. Callers read false as "no
// solution".
//
// Every edge evaluation needs an inverse. The textbook form carries the identity along as the right
// half of each row. In the order in which rows become pivots, that half is always unit lower
// triangular, so the code stores and updates only its part below the diagonal and restores the
// column order when it writes the result. This skips multiplications by known zeros and ones and
// does not change a bit of the rest. Loops are unrolled, and the reduced rows of each column are
// new values, which keeps them in registers.
#pragma once

#include <cmath>
#include <cstddef>

namespace korvalite::core {

namespace detail {

/// Moves the row with the larger leading element up by swapping pointers; on a tie, keeps the
/// order.
template <typename Row>
inline void orderRows(const Row*& upper, const Row*& lower, double upperLead, double lowerLead) {
    const bool swap = std::fabs(lowerLead) > std::fabs(upperLead);
    const Row* const larger = swap ? lower : upper;
    lower = swap ? upper : lower;
    upper = larger;
}

/// value - factor * element, but `value` if the element is 0, because an infinite factor times 0 is
/// NaN.
inline double reduceRight(double value, double factor, double element) {
    return element != 0.0 ? value - factor * element : value;
}

/// Reduced rows, named by their first remaining column: the rest of the matrix (a2 is column 2) and
/// the right half below the diagonal (b0 belongs to the first pivot).
struct Row3From1 {
    double a1, a2;
    double b0;
    const double* source;
};
struct Row4From1 {
    double a1, a2, a3;
    double b0;
    const double* source;
};
struct Row4From2 {
    double a2, a3;
    double b0, b1;
    const double* source;
};

inline Row3From1 eliminateColumn0Of3(const double* row, const double* pivotRow) {
    const double factor = row[0] / pivotRow[0];
    return {row[1] - factor * pivotRow[1], row[2] - factor * pivotRow[2], 0.0 - factor, row};
}

inline Row4From1 eliminateColumn0Of4(const double* row, const double* pivotRow) {
    const double factor = row[0] / pivotRow[0];
    return {row[1] - factor * pivotRow[1], row[2] - factor * pivotRow[2],
            row[3] - factor * pivotRow[3], 0.0 - factor, row};
}

inline Row4From2 eliminateColumn1Of4(const Row4From1& row, const Row4From1& pivotRow) {
    const double factor = row.a1 / pivotRow.a1;
    return {row.a2 - factor * pivotRow.a2, row.a3 - factor * pivotRow.a3,
            reduceRight(row.b0, factor, pivotRow.b0), 0.0 - factor, row.source};
}

}  // namespace detail

/// False, with `out` untouched, if a pivot is exactly 0. `out` may be `in`.
[[nodiscard]] inline bool invert3(double out[9], const double in[9]) {
    const double* r0 = in;
    const double* r1 = in + 3;
    const double* r2 = in + 6;
    detail::orderRows(r1, r2, r1[0], r2[0]);
    detail::orderRows(r0, r1, r0[0], r1[0]);
    const double pivot0 = r0[0];
    if (pivot0 == 0.0) return false;
    const double r0a1 = r0[1];
    const double r0a2 = r0[2];

    const detail::Row3From1 second = detail::eliminateColumn0Of3(r1, r0);
    const detail::Row3From1 third = detail::eliminateColumn0Of3(r2, r0);
    const detail::Row3From1* s1 = &second;
    const detail::Row3From1* s2 = &third;
    detail::orderRows(s1, s2, s1->a1, s2->a1);
    const double pivot1 = s1->a1;
    if (pivot1 == 0.0) return false;

    const double factor = s2->a1 / pivot1;
    const double pivot2 = s2->a2 - factor * s1->a2;
    if (pivot2 == 0.0) return false;

    const double reciprocal2 = 1.0 / pivot2;
    const double z0 = detail::reduceRight(s2->b0, factor, s1->b0) * reciprocal2;
    const double z1 = (0.0 - factor) * reciprocal2;
    const double z2 = reciprocal2;

    const double reciprocal1 = 1.0 / pivot1;
    const double y0 = (s1->b0 - s1->a2 * z0) * reciprocal1;
    const double y1 = (1.0 - s1->a2 * z1) * reciprocal1;
    const double y2 = (0.0 - s1->a2 * z2) * reciprocal1;

    const double reciprocal0 = 1.0 / pivot0;
    const double x0 = (1.0 - r0a2 * z0 - r0a1 * y0) * reciprocal0;
    const double x1 = (0.0 - r0a2 * z1 - r0a1 * y1) * reciprocal0;
    const double x2 = (0.0 - r0a2 * z2 - r0a1 * y2) * reciprocal0;

    const std::ptrdiff_t column0 = (r0 - in) / 3;
    const std::ptrdiff_t column1 = (s1->source - in) / 3;
    const std::ptrdiff_t column2 = (s2->source - in) / 3;
    const auto write = [out](std::ptrdiff_t column, double x, double y, double z) {
        out[column] = x;
        out[3 + column] = y;
        out[6 + column] = z;
    };
    write(column0, x0, y0, z0);
    write(column1, x1, y1, z1);
    write(column2, x2, y2, z2);
    return true;
}

/// False, with `out` untouched, if a pivot is exactly 0. `out` may be `in`.
[[nodiscard]] inline bool invert4d(double out[16], const double in[16]) {
    const double* r0 = in;
    const double* r1 = in + 4;
    const double* r2 = in + 8;
    const double* r3 = in + 12;
    detail::orderRows(r2, r3, r2[0], r3[0]);
    detail::orderRows(r1, r2, r1[0], r2[0]);
    detail::orderRows(r0, r1, r0[0], r1[0]);
    const double pivot0 = r0[0];
    if (pivot0 == 0.0) return false;
    const double r0a1 = r0[1];
    const double r0a2 = r0[2];
    const double r0a3 = r0[3];

    const detail::Row4From1 second = detail::eliminateColumn0Of4(r1, r0);
    const detail::Row4From1 third = detail::eliminateColumn0Of4(r2, r0);
    const detail::Row4From1 fourth = detail::eliminateColumn0Of4(r3, r0);
    const detail::Row4From1* s1 = &second;
    const detail::Row4From1* s2 = &third;
    const detail::Row4From1* s3 = &fourth;
    detail::orderRows(s2, s3, s2->a1, s3->a1);
    detail::orderRows(s1, s2, s1->a1, s2->a1);
    const double pivot1 = s1->a1;
    if (pivot1 == 0.0) return false;
    const double s1a2 = s1->a2;
    const double s1a3 = s1->a3;

    const detail::Row4From2 beforeLast = detail::eliminateColumn1Of4(*s2, *s1);
    const detail::Row4From2 last = detail::eliminateColumn1Of4(*s3, *s1);
    const detail::Row4From2* t2 = &beforeLast;
    const detail::Row4From2* t3 = &last;
    detail::orderRows(t2, t3, t2->a2, t3->a2);
    const double pivot2 = t2->a2;
    if (pivot2 == 0.0) return false;
    const double t2a3 = t2->a3;

    const double factor = t3->a2 / pivot2;
    const double pivot3 = t3->a3 - factor * t2a3;
    if (pivot3 == 0.0) return false;

    const double reciprocal0 = 1.0 / pivot0;
    const double reciprocal1 = 1.0 / pivot1;
    const double reciprocal2 = 1.0 / pivot2;
    const double reciprocal3 = 1.0 / pivot3;
    // Solves for one column of the inverse, given that column of the right half, top to bottom.
    const auto solve = [&](const double* source, double b0, double b1, double b2, double b3) {
        const double w = b3 * reciprocal3;
        const double z = (b2 - t2a3 * w) * reciprocal2;
        const double y = (b1 - s1a3 * w - s1a2 * z) * reciprocal1;
        const double x = (b0 - r0a3 * w - r0a2 * z - r0a1 * y) * reciprocal0;
        double* const top = out + (source - in) / 4;
        top[0] = x;
        top[4] = y;
        top[8] = z;
        top[12] = w;
    };
    const double s1b0 = s1->b0;
    const double t2b0 = t2->b0;
    const double t2b1 = t2->b1;
    const double t3b0 = detail::reduceRight(t3->b0, factor, t2b0);
    const double t3b1 = detail::reduceRight(t3->b1, factor, t2b1);
    solve(r0, 1.0, s1b0, t2b0, t3b0);
    solve(s1->source, 0.0, 1.0, t2b1, t3b1);
    solve(t2->source, 0.0, 0.0, 1.0, 0.0 - factor);
    solve(t3->source, 0.0, 0.0, 0.0, 1.0);
    return true;
}

/// Like `invert4d`: computes in double and narrows only the result.
[[nodiscard]] bool invert4f(float out[16], const float in[16]);

}  // namespace korvalite::core
