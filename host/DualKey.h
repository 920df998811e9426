#ifndef HOST_DUAL_KEY_H
#define HOST_DUAL_KEY_H

// A pair of keys, ordered by the first part, then by the second. With unsigned ids both parts compare unsigned.
template <class First, class Second>
struct DualKey {
  DualKey() : first(), second() {}
  DualKey(const First& firstPart, const Second& secondPart) : first(firstPart), second(secondPart) {}

  First first;
  Second second;
};

template <class First, class Second>
bool operator<(const DualKey<First, Second>& left, const DualKey<First, Second>& right) {
  if (left.first < right.first) {
    return true;
  }
  return !(right.first < left.first) && left.second < right.second;
}

template <class First, class Second>
bool operator==(const DualKey<First, Second>& left, const DualKey<First, Second>& right) {
  return left.first == right.first && left.second == right.second;
}

#endif
