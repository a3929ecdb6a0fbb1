// Nothing: its target carries headers that others share.
