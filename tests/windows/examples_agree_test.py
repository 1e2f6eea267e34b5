#!/usr/bin/env python3
"""Whether the comparison of the two programs sees what it must see."""
import math
import unittest

from examples_agree import largest_difference


class LargestDifference(unittest.TestCase):
    def test_is_relative_to_the_largest_number(self):
        self.assertEqual(largest_difference([2.0, 4.0], [2.0, 3.0]), 0.25)
        self.assertEqual(largest_difference([0.5], [0.25], 1.0), 0.25)
        self.assertEqual(largest_difference([], []), 0.0)

    def test_is_infinite_for_other_shapes(self):
        self.assertEqual(largest_difference([1.0], [1.0, 2.0]), math.inf)

    def test_is_infinite_wherever_one_of_them_has_no_number(self):
        for one, other in ([[1.0, math.nan], [1.0, 1.0]], [[1.0, 1.0], [math.nan, 1.0]], [[math.nan], [math.nan]]):
            self.assertEqual(largest_difference(one, other), math.inf)


if __name__ == "__main__":
    unittest.main()
