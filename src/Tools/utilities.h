// Bit and array utilities of the toolkit.
//
// Bit arrays hold one bit (0 or 1) per int. Codes move between two orders of
// the same polynomial: interface order (element 0 = highest-degree
// coefficient) and degree order (element i = coefficient of x^i); reversing
// the array converts one into the other.
#pragma once

// Reverses a[0..n-1] in place; n <= 1 leaves the array as it is.
void array_rev(int* a, int n);
