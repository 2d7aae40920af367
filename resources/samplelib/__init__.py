"""What make_sample.py is made of: the sources, the record, one module for each block, the checks."""
