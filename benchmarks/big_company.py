#!/usr/bin/env python3
"""Makes a company of many accounts, for benchmarks/page_list.js.

Usage: big_company.py SAMPLE.xml OUTPUT.xml
"""

import re
import sys
from pathlib import Path

ACCOUNTS = 1000

ACCOUNT = """    <Account>
      <ListID>L-{number}</ListID>
      <TimeCreated>2024-01-02T08:30:00</TimeCreated>
      <TimeModified>2024-01-02T08:30:00</TimeModified>
      <EditSequence>1</EditSequence>
      <Name>Branch account {number}</Name>
      <FullName>Branch account {number}</FullName>
      <IsActive>true</IsActive>
      <Sublevel>0</Sublevel>
      <AccountType>Bank</AccountType>
      <AccountNumber>{number}</AccountNumber>
      <BankNumber>000123{number}</BankNumber>
      <Desc>One of many</Desc>
      <Balance>0.00</Balance>
    </Account>
"""


def main() -> int:
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    text = Path(sys.argv[1]).read_text(encoding="utf-8")
    found = re.search(r'nextNumber="(\d+)"', text)
    if found is None:
        sys.exit(f"{sys.argv[1]}: no company file as text")
    first = int(found[1])
    accounts = "".join(ACCOUNT.format(number=number) for number in range(first, first + ACCOUNTS))
    text = text.replace(found[0], f'nextNumber="{first + ACCOUNTS}"')
    Path(sys.argv[2]).write_text(text.replace("  </Accounts>\n", accounts + "  </Accounts>\n"), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
