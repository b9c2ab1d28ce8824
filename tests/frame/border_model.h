// Where a pixel outside the region comes from, written out rule by rule.
#pragma once

namespace orvtest::model {

/// The index that is read for index i of an axis of n pixels; `constant` says that the border value is used instead.
struct AxisIndex {
  int index;
  bool constant;
};

inline AxisIndex mapAxis(int i, int n, int kind, bool lowInMemory, bool highInMemory) {
  if (i >= 0 && i < n)
    return {i, false};
  if (kind == 0)  // the bare word 240
    return {i, false};
  if (kind == 6) {
    if (i < 0)
      return {i, !lowInMemory};
    return {i, !highInMemory};
  }
  if (kind == 1) {
    if (i < 0)
      return {lowInMemory ? i : 0, false};
    return {highInMemory ? i : n - 1, false};
  }
  if (n == 1) {
    if (i < 0)
      return {lowInMemory ? i : highInMemory ? -i : 0, false};
    return {highInMemory ? i : lowInMemory ? -i : 0, false};
  }
  for (;;) {
    if (i < 0) {
      if (lowInMemory)
        return {i, false};
      i = -i;
    }
    if (i >= n) {
      if (highInMemory)
        return {i, false};
      i = 2 * n - 2 - i;
    }
    if (i >= 0 && i < n)
      return {i, false};
  }
}

inline AxisIndex mapColumn(int x, int width, int word) {
  return mapAxis(x, width, word & 15, (word & 0x40) != 0, (word & 0x80) != 0);
}
inline AxisIndex mapRow(int y, int height, int word) {
  return mapAxis(y, height, word & 15, (word & 0x10) != 0, (word & 0x20) != 0);
}

}  // namespace orvtest::model
