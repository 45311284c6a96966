// Its descriptor is a resource without a byte.
