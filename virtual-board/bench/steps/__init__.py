"""The steps of the walk, by what they exercise. A step takes the bench and reports what it sees."""
