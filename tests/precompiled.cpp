// Nothing: its target carries the headers that the tests share.
