#include "coder/binary_expand_op.h"
#include "coder/coder_array.h"
#include "coder/rtwtypes.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(CoderArray, ColumnMajorIndexingAndExtents) {
  coder::array<double, 2> a;
  EXPECT_EQ(a.size(0), 0);
  EXPECT_EQ(a.size(1), 0);
  EXPECT_TRUE(a.empty());
  a.set_size(3, 4);
  for (int i = 0; i < a.numel(); ++i)
    a[i] = i;
  EXPECT_EQ(a.size(0), 3);
  EXPECT_EQ(a.size(1), 4);
  EXPECT_EQ(a.numel(), 12);
  // Row 2, column 3 of a 3-row matrix is flat index 2 + 3 * 3.
  EXPECT_EQ(a(2, 3), 11.0);
  EXPECT_EQ(a(1, 0), 1.0);
  EXPECT_EQ(a(0, 1), 3.0);
  EXPECT_EQ(a.size()[1], 4);
}

TEST(CoderArray, SetSizeKeepsElementsAtTheirFlatPositions) {
  coder::array<int, 2> a;
  a.set_size(2, 3);
  for (int i = 0; i < 6; ++i)
    a[i] = 10 + i;
  const int* before = a.data();
  a.set_size(3, 2); // same count: no reallocation, same flat order
  EXPECT_EQ(a.data(), before);
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(a[i], 10 + i);
  a.set_size(1, 40); // grows beyond the capacity of 16
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(a[i], 10 + i);
  a.set_size(1, 2); // shrinking keeps the first elements and the capacity
  EXPECT_EQ(a[0], 10);
  EXPECT_EQ(a[1], 11);
  EXPECT_EQ(a.capacity(), 64);
}

TEST(CoderArray, NegativeExtentsSizeEmptyAndViewsGrowIntoTheirOwnBuffer) {
  coder::array<double, 2> a;
  a.set_size(-3, 4);
  EXPECT_EQ(a.size(0), 0);
  EXPECT_EQ(a.numel(), 0);
  coder::array<double, 2> copy(a);
  EXPECT_EQ(copy.numel(), 0);
  double outside[3] = {1.0, 2.0, 3.0};
  coder::array<double, 1> view;
  view.set(outside, 3);
  EXPECT_FALSE(view.is_owner());
  view[1] = 20.0;
  EXPECT_EQ(outside[1], 20.0);
  // Growing beyond the outside buffer copies into a buffer of the array's own.
  view.set_size(40);
  EXPECT_TRUE(view.is_owner());
  EXPECT_EQ(view[1], 20.0);
  view[0] = -1.0;
  EXPECT_EQ(outside[0], 1.0);
}

TEST(CoderArray, CapacityStartsAtSixteenAndDoubles) {
  coder::array<double, 1> a;
  a.set_size(1);
  EXPECT_EQ(a.capacity(), 16);
  a.set_size(16);
  EXPECT_EQ(a.capacity(), 16);
  a.set_size(17);
  EXPECT_EQ(a.capacity(), 32);
  a.set_size(100);
  EXPECT_EQ(a.capacity(), 128);
  a.set_size(129);
  EXPECT_EQ(a.capacity(), 256);
  a.set_size(0);
  EXPECT_EQ(a.capacity(), 256);
}

TEST(CoderArray, CopiesAreDeepAndMovesTransferTheBuffer) {
  coder::array<double, 1> a;
  a.set_size(5);
  for (int i = 0; i < 5; ++i)
    a[i] = i * 1.5;
  coder::array<double, 1> b(a);
  b[0] = 99.0;
  EXPECT_EQ(a[0], 0.0);
  coder::array<double, 1> c;
  c = a;
  c[4] = -1.0;
  EXPECT_EQ(a[4], 6.0);
  EXPECT_NE(c.data(), a.data());
  const double* buffer = a.data();
  coder::array<double, 1> d(std::move(a));
  EXPECT_EQ(d.data(), buffer);
  EXPECT_EQ(d.size(0), 5);
  EXPECT_EQ(a.numel(), 0);
}

TEST(CoderArray, ReshapeIsAViewOfTheSameElements) {
  coder::array<double, 2> row;
  row.set_size(1, 6);
  for (int i = 0; i < 6; ++i)
    row[i] = i;
  coder::array<double, 1> column = row.reshape(6);
  EXPECT_EQ(column.data(), row.data());
  EXPECT_FALSE(column.is_owner());
  EXPECT_EQ(column.size(0), 6);
  column[2] = 42.0;
  EXPECT_EQ(row[2], 42.0);
  coder::array<double, 2> matrix = row.reshape(2, 3);
  EXPECT_EQ(matrix(0, 1), 42.0);
  // A copy of a view owns its own buffer.
  coder::array<double, 1> copy(column);
  EXPECT_TRUE(copy.is_owner());
  EXPECT_NE(copy.data(), row.data());
}

TEST(CoderArray, ComplexElementsAreAdjacentDoubles) {
  static_assert(sizeof(creal_T) == 2 * sizeof(double), "no padding between re and im");
  coder::array<creal_T, 2> z;
  z.set_size(1, 2);
  z[1] = {3.0, -4.0};
  const double* raw = reinterpret_cast<const double*>(z.data());
  EXPECT_EQ(raw[2], 3.0);
  EXPECT_EQ(raw[3], -4.0);
}

TEST(BinaryExpandOp, RepeatsSingletonDimensions) {
  coder::array<double, 2> column;
  column.set_size(3, 1);
  for (int i = 0; i < 3; ++i)
    column[i] = i + 1; // 1 2 3
  coder::array<double, 2> row;
  row.set_size(1, 2);
  row[0] = 10.0;
  row[1] = 20.0;
  coder::array<double, 2> sum;
  coder::plus(sum, column, row);
  ASSERT_EQ(sum.size(0), 3);
  ASSERT_EQ(sum.size(1), 2);
  EXPECT_EQ(sum(2, 1), 23.0);
  EXPECT_EQ(sum(0, 0), 11.0);

  // Equal sizes: plain element-wise.
  coder::array<double, 2> product;
  coder::times(product, sum, sum);
  EXPECT_EQ(product(1, 1), 22.0 * 22.0);

  // A rank-1 column against a row: the column has extent 1 in the second dimension.
  coder::array<double, 1> vec;
  vec.set_size(2);
  vec[0] = 1.0;
  vec[1] = 2.0;
  coder::array<double, 2> diff;
  coder::minus(diff, vec, row);
  ASSERT_EQ(diff.size(0), 2);
  ASSERT_EQ(diff.size(1), 2);
  EXPECT_EQ(diff(1, 0), -8.0);
  EXPECT_EQ(diff(0, 1), -19.0);

  // Incompatible extents give an empty result rather than reading past either operand.
  coder::array<double, 2> three;
  three.set_size(1, 3);
  for (int i = 0; i < 3; ++i)
    three[i] = 1.0;
  coder::array<double, 2> bad;
  coder::rdivide(bad, row, three);
  EXPECT_EQ(bad.numel(), 0);
}

} // namespace
