// Views and rows. A view is a pointer and a step in bytes; it owns nothing. Rows advance by bytes, so that any pointer
// residue works.
#pragma once

#include <cstdint>
#include <tuple>

namespace orv {

/// Computed as a number: a walk may step past the end of the last row, where a pointer must not go.
template <class Sample>
Sample* advanceBytes(Sample* pointer, intptr_t bytes) {
  return reinterpret_cast<Sample*>(reinterpret_cast<uintptr_t>(pointer) + static_cast<uintptr_t>(bytes));
}

template <class Sample>
struct View {
  Sample* first;
  int step;

  Sample* row(int y) const { return advanceBytes(first, static_cast<intptr_t>(y) * step); }
};

template <class Sample>
View(Sample*, int) -> View<Sample>;

/// Walks the rows of several views at once: for (auto [a, s] : rows(height, View{acc, accStep}, View{src, srcStep}))
template <class... Samples>
class Rows {
public:
  struct Iterator {
    int rowsLeft;
    std::tuple<View<Samples>...> views;

    bool operator!=(const Iterator& other) const { return rowsLeft != other.rowsLeft; }
    std::tuple<Samples*...> operator*() const {
      return std::apply([](const auto&... view) { return std::tuple<Samples*...>{view.first...}; }, views);
    }
    void operator++() {
      --rowsLeft;
      std::apply([](auto&... view) { ((view.first = advanceBytes(view.first, view.step)), ...); }, views);
    }
  };

  Rows(int height, View<Samples>... views) : height_(height), views_(views...) {}
  Iterator begin() const { return {height_, views_}; }
  Iterator end() const { return {0, views_}; }

private:
  int height_;
  std::tuple<View<Samples>...> views_;
};

template <class... Samples>
Rows<Samples...> rows(int height, View<Samples>... views) {
  return {height, views...};
}

}  // namespace orv
