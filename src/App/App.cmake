# The process: main and the composition root.
