"""Whether a curve grows."""
import math
import statistics

# A curve grows when it rises by more than this share of its middle and by more than its own allowance.
SHARE = 0.05
LEAST_POINTS = 20
# So many standard deviations more pairs of points must rise than fall: once in a thousand curves chance alone does that.
CERTAIN = 3.0


def slope(points):
    """Returns the median of the slopes between all pairs of points: half of the points may be wild and do not matter."""
    slopes = [(later[1] - earlier[1]) / (later[0] - earlier[0])
              for index, earlier in enumerate(points) for later in points[index + 1:] if later[0] != earlier[0]]
    return statistics.median(slopes) if slopes else 0.0


def climb(points):
    """Returns by how much the line through the points rises from the first to the last one."""
    return slope(points) * (points[-1][0] - points[0][0]) if len(points) > 1 else 0.0


def certainty(points):
    """Returns by how many standard deviations more pairs rise than fall, beside points that are in any order."""
    count = len(points)
    rising = sum((later[1] > earlier[1]) - (later[1] < earlier[1]) for index, earlier in enumerate(points) for later in points[index + 1:])
    return rising / math.sqrt(count * (count - 1) * (2 * count + 5) / 18)


def thirds(points):
    """Returns the median of each third of the points."""
    size = len(points) // 3
    return [statistics.median(value for _, value in part)
            for part in (points[:size], points[size:-size], points[-size:])]


def grows(points, allowance, share=SHARE):
    """Whether the curve grows: its line rises by more than `share` of its middle and more than `allowance`, chance would not
    make so many pairs of points rise, and each third of it is above the one before. A single step is not growth, and neither
    is a wave. Few points say nothing."""
    if len(points) < LEAST_POINTS:
        return False
    rise = climb(points)
    first, second, third = thirds(points)
    middle = statistics.median(value for _, value in points)
    return rise > max(share * middle, allowance) and certainty(points) > CERTAIN and first < second < third
