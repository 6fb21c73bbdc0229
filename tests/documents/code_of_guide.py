"""code_of_guide.py GUIDE SOURCE: every line of C in the guide's code blocks is a line of SOURCE."""
import re
import sys

guide, source = (open(path, encoding="utf-8").read() for path in sys.argv[1:3])
known = set(source.splitlines())
blocks = re.findall(r"^```c\n(.*?)^```", guide, re.MULTILINE | re.DOTALL)
unknown = [line for block in blocks for line in block.splitlines() if line not in known]
if not blocks:
    sys.exit("no code of C in the guide")
for line in unknown:
    print("not in the source:", line)
sys.exit(1 if unknown else 0)
