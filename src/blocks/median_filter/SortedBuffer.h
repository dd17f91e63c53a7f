// The sorted window of the running median: the window's numbers in ascending order plus a
// count of the NaNs among them, so that each slide of the window costs a shift of at most
// ten elements instead of a sort.
#pragma once

#include <vector>

namespace median_filter_ns {

class SortedBuffer {
public:
  // A NaN raises the NaN count; any other value goes into sorted order, behind the values
  // equal to it. Storage grows in steps of 256 elements.
  void insert(double v);
  // A NaN lowers the NaN count (not below 0); any other value removes the located element
  // when it equals v exactly, and nothing otherwise.
  void remove(double v);
  // remove(old_value) then insert(new_value), done as one shift of the elements between the
  // two places.
  void replace(double old_value, double new_value);
  // Number of stored elements not greater than v (binary search).
  int locateElement(double v) const;
  // NaN when a NaN is in the window or the buffer is empty; the middle element for an odd
  // size; for an even size with central elements a <= b: (a + b) / 2 when they differ in
  // sign or a is infinite, otherwise a + (b - a) / 2, which cannot overflow.
  double median() const;

  int size() const { return size_; }
  int nanCount() const { return nan_count_; }
  // The stored numbers in ascending order.
  const double* data() const { return buffer_.data(); }

private:
  static constexpr int kGrowth = 256;

  std::vector<double> buffer_;
  int size_ = 0;
  int nan_count_ = 0;
};

} // namespace median_filter_ns
