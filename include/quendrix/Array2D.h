#pragma once

#include <quendrix/RuntimeError.h>

#include <QVariant>
#include <utility>
#include <vector>

namespace quendrix {

// A two-dimensional array with bounds of its own, as the system's tables are: the first
// index is the field (column), the second the record (row). Out-of-bounds access is a
// subscript error. A default-constructed array holds nothing (like one never dimensioned).
template <typename T>
class Array2D {
public:
    Array2D() = default;
    // An array with the bounds lower1..upper1 and lower2..upper2, every element T().
    Array2D(int lower1, int upper1, int lower2, int upper2) {
        redim(lower1, upper1, lower2, upper2);
    }

    // Resizes to the given bounds; every element starts as T(). Upper < lower empties it.
    void redim(int lower1, int upper1, int lower2, int upper2) {
        lower_[0] = lower1;
        upper_[0] = upper1;
        lower_[1] = lower2;
        upper_[1] = upper2;
        const int n1 = upper1 >= lower1 ? upper1 - lower1 + 1 : 0;
        const int n2 = upper2 >= lower2 ? upper2 - lower2 + 1 : 0;
        cells_.assign(static_cast<size_t>(n1) * static_cast<size_t>(n2), T());
        if (cells_.empty()) upper_[0] = lower_[0] - 1, upper_[1] = lower_[1] - 1;
    }

    // True when the array holds no element.
    bool isEmpty() const { return cells_.empty(); }
    // The lower and upper bound of a dimension: 1 or 2, as the system counts them; any other
    // is a subscript error.
    //@{
    int lbound(int dimension) const { return lower_[checkedDimension(dimension)]; }
    int ubound(int dimension) const { return upper_[checkedDimension(dimension)]; }
    //@}

    // The element of field i in record j; outside the bounds a subscript error.
    //@{
    T& operator()(int i, int j) { return cells_[offset(i, j)]; }
    const T& operator()(int i, int j) const { return cells_[offset(i, j)]; }
    //@}

    // Exchanges two whole records (every field).
    void swapRows(int j1, int j2) {
        for (int i = lower_[0]; i <= upper_[0]; ++i)
            std::swap((*this)(i, j1), (*this)(i, j2));
    }

    // The same bounds and the same elements.
    bool operator==(const Array2D&) const = default;

private:
    static int checkedDimension(int dimension) {
        if (dimension != 1 && dimension != 2) throw RuntimeError(RuntimeError::SubscriptOutOfRange);
        return dimension - 1;
    }
    size_t offset(int i, int j) const {
        if (i < lower_[0] || i > upper_[0] || j < lower_[1] || j > upper_[1])
            throw RuntimeError(RuntimeError::SubscriptOutOfRange);
        const size_t columns = static_cast<size_t>(upper_[0] - lower_[0] + 1);
        return static_cast<size_t>(j - lower_[1]) * columns + static_cast<size_t>(i - lower_[0]);
    }

    int lower_[2] = {0, 0};
    int upper_[2] = {-1, -1};
    std::vector<T> cells_;
};

using DoubleTable = Array2D<double>;     // the calibration table `Matrix`
using VariantTable = Array2D<QVariant>;  // a table of mixed numbers and texts

}  // namespace quendrix
