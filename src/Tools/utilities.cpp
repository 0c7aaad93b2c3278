#include "Tools/utilities.h"

#include <algorithm>

void array_rev(int* a, int n) {
  if (n > 1) std::reverse(a, a + n);
}
