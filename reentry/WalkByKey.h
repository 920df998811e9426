#ifndef REENTRY_WALK_BY_KEY_H
#define REENTRY_WALK_BY_KEY_H

// Calls `visit(key, value)` with a copy of each entry of an ordered map, in the order of the keys. `visit` may change the
// map, even through calls to others: no iterator is held during the call, and the walk continues at the next higher key that
// the map then has.
template <class Map, class Visit>
void WalkByKey(const Map& map, Visit visit) {
  typename Map::const_iterator entry = map.begin();
  while (entry != map.end()) {
    const typename Map::key_type key = entry->first;
    const typename Map::mapped_type value = entry->second;
    visit(key, value);
    entry = map.upper_bound(key);
  }
}

#endif
