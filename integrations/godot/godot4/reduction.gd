extends RefCounted
# Keys where a curve bends, in place of one for every frame.


# The fewest keys that Douglas and Peucker's method finds so that straight lines between them stay
# within `tolerance` of all of `keys`, which are Vector2 of time and value in order of time.
static func reduce(keys: Array, tolerance: float) -> Array:
	if keys.size() < 3:
		return keys
	var kept := {0: true, keys.size() - 1: true}
	var stretches := [[0, keys.size() - 1]]
	while not stretches.is_empty():
		var ends: Array = stretches.pop_back()
		var from: Vector2 = keys[ends[0]]
		var to: Vector2 = keys[ends[1]]
		var worst := tolerance
		var farthest := -1
		for i: int in range(ends[0] + 1, ends[1]):
			var on_line: float = from.y + (to.y - from.y) * (keys[i].x - from.x) / (to.x - from.x)
			if absf(on_line - keys[i].y) > worst:
				worst = absf(on_line - keys[i].y)
				farthest = i
		if farthest >= 0:
			kept[farthest] = true
			stretches.append([ends[0], farthest])
			stretches.append([farthest, ends[1]])
	var numbers := kept.keys()
	numbers.sort()
	return numbers.map(func(number: int) -> Vector2: return keys[number])
