-- The company file of the reference host.
--
-- What must always be true of the books is a constraint here. Amounts are whole cents in 64 bits. Dates are YYYY-MM-DD,
-- times YYYY-MM-DDTHH:MM:SS in the machine's own time. "folded" names hold the name as it counts: in one canonical form
-- of Unicode and without regard to letter case.

-- Which company this is. One row.
CREATE TABLE company (
    one     INTEGER PRIMARY KEY CHECK (one = 1),
    name    TEXT NOT NULL
) STRICT;

-- Everything that has an id, whatever its list: L-number in a list, T-number for a transaction. AUTOINCREMENT never
-- gives out a number again, not even that of the last record after it was removed.
CREATE TABLE records (
    number          INTEGER PRIMARY KEY AUTOINCREMENT,
    time_created    TEXT NOT NULL,
    time_modified   TEXT NOT NULL,
    -- Counts the changes of the record, so that a change that was made from an older state is noticed.
    edit_sequence   INTEGER NOT NULL DEFAULT 1 CHECK (edit_sequence >= 1)
) STRICT;

-- The kinds of account. An amount counts as a debit when it is positive, as a credit when it is negative; normal_side
-- turns a sum of those into the balance that an accountant expects to read. A kind without a side is never posted to.
CREATE TABLE account_types (
    type            TEXT PRIMARY KEY,
    normal_side     INTEGER CHECK (normal_side IN (1, -1))
) STRICT, WITHOUT ROWID;

INSERT INTO account_types VALUES
    ('AccountsPayable', -1), ('AccountsReceivable', 1), ('Bank', 1), ('CostOfGoodsSold', 1), ('CreditCard', -1),
    ('Equity', -1), ('Expense', 1), ('FixedAsset', 1), ('Income', -1), ('LongTermLiability', -1), ('NonPosting', NULL),
    ('OtherAsset', 1), ('OtherCurrentAsset', 1), ('OtherCurrentLiability', -1), ('OtherExpense', 1),
    ('OtherIncome', -1);

CREATE TABLE accounts (
    number          INTEGER PRIMARY KEY REFERENCES records,
    parent          INTEGER REFERENCES accounts,
    name            TEXT NOT NULL CHECK (length(name) BETWEEN 1 AND 100),
    -- With the names of the parents in front: "Landscaping:Design".
    full_name       TEXT NOT NULL,
    folded_name     TEXT NOT NULL UNIQUE,
    is_active       INTEGER NOT NULL CHECK (is_active IN (0, 1)),
    type            TEXT NOT NULL REFERENCES account_types,
    account_number  TEXT,
    bank_number     TEXT,
    description     TEXT,
    -- The sum of the account's postings; kept by the triggers below.
    balance         INTEGER NOT NULL DEFAULT 0 CHECK (balance BETWEEN -999999999999999 AND 999999999999999)
) STRICT;
CREATE INDEX accounts_by_type ON accounts (type, number);

CREATE TABLE customers (
    number          INTEGER PRIMARY KEY REFERENCES records,
    parent          INTEGER REFERENCES customers,
    name            TEXT NOT NULL CHECK (length(name) BETWEEN 1 AND 100),
    full_name       TEXT NOT NULL,
    folded_name     TEXT NOT NULL UNIQUE,
    is_active       INTEGER NOT NULL CHECK (is_active IN (0, 1)),
    company_name    TEXT,
    contact         TEXT,
    phone           TEXT,
    email           TEXT,
    -- What the customer owes: the sum of the postings in the customer's name; kept by the triggers below.
    balance         INTEGER NOT NULL DEFAULT 0 CHECK (balance BETWEEN -999999999999999 AND 999999999999999)
) STRICT;

CREATE TABLE tax_codes (
    number          INTEGER PRIMARY KEY REFERENCES records,
    name            TEXT NOT NULL CHECK (length(name) BETWEEN 1 AND 100),
    folded_name     TEXT NOT NULL UNIQUE,
    is_active       INTEGER NOT NULL CHECK (is_active IN (0, 1)),
    is_taxable      INTEGER NOT NULL CHECK (is_taxable IN (0, 1)),
    description     TEXT
) STRICT;

CREATE TABLE payment_methods (
    number          INTEGER PRIMARY KEY REFERENCES records,
    name            TEXT NOT NULL CHECK (length(name) BETWEEN 1 AND 100),
    folded_name     TEXT NOT NULL UNIQUE,
    is_active       INTEGER NOT NULL CHECK (is_active IN (0, 1)),
    type            TEXT
) STRICT;

CREATE TABLE items (
    number          INTEGER PRIMARY KEY REFERENCES records,
    parent          INTEGER REFERENCES items,
    name            TEXT NOT NULL CHECK (length(name) BETWEEN 1 AND 100),
    full_name       TEXT NOT NULL,
    folded_name     TEXT NOT NULL UNIQUE,
    is_active       INTEGER NOT NULL CHECK (is_active IN (0, 1)),
    type            TEXT NOT NULL,
    description     TEXT,
    tax_code        INTEGER REFERENCES tax_codes,
    price           INTEGER CHECK (price BETWEEN -9999999999999 AND 9999999999999),
    -- Where a sale of the item is posted.
    account         INTEGER REFERENCES accounts,
    payment_method  INTEGER REFERENCES payment_methods
) STRICT;

-- The table of the one value that a transaction's debits and credits may differ by.
CREATE TABLE balanced (difference INTEGER PRIMARY KEY CHECK (difference = 0)) STRICT;
INSERT INTO balanced VALUES (0);

CREATE TABLE transactions (
    number          INTEGER PRIMARY KEY REFERENCES records,
    kind            TEXT NOT NULL CHECK (kind IN ('Invoice', 'ReceivePayment', 'SalesReceipt', 'CreditMemo', 'Deposit',
                                                  'Check', 'JournalEntry')),
    -- The customer, or the payee of a check.
    customer        INTEGER REFERENCES customers,
    -- The receivables account of what customers owe, and the account that money comes into or is paid from.
    receivables     INTEGER REFERENCES accounts,
    account         INTEGER REFERENCES accounts,
    txn_date        TEXT NOT NULL CHECK (txn_date GLOB '[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]'),
    ref_number      TEXT,
    payment_method  INTEGER REFERENCES payment_methods,
    memo            TEXT,
    total           INTEGER NOT NULL CHECK (total BETWEEN 0 AND 9999999999999),
    -- Of an invoice: what is still to be paid. Of a received payment: what no invoice took. Kept by a trigger below.
    remaining       INTEGER CHECK (remaining BETWEEN 0 AND total),
    -- The sum of the postings; kept by a trigger below. No transaction is committed that is out of balance.
    difference      INTEGER NOT NULL DEFAULT 0 REFERENCES balanced DEFERRABLE INITIALLY DEFERRED
) STRICT;
CREATE INDEX transactions_by_kind ON transactions (kind, number);
CREATE INDEX transactions_by_customer ON transactions (customer, kind) WHERE customer IS NOT NULL;
CREATE INDEX transactions_by_reference ON transactions (ref_number, kind) WHERE ref_number IS NOT NULL;
CREATE INDEX transactions_by_date ON transactions (kind, txn_date);
CREATE INDEX open_invoices ON transactions (customer, txn_date) WHERE kind = 'Invoice' AND remaining > 0;

-- The lines of a transaction as they were entered.
CREATE TABLE lines (
    txn             INTEGER NOT NULL REFERENCES transactions,
    position        INTEGER NOT NULL,
    item            INTEGER REFERENCES items,
    account         INTEGER REFERENCES accounts,
    customer        INTEGER REFERENCES customers,
    description     TEXT,
    memo            TEXT,
    amount          INTEGER NOT NULL CHECK (amount BETWEEN -9999999999999 AND 9999999999999),
    PRIMARY KEY (txn, position),
    CHECK (item IS NULL OR account IS NULL)
) STRICT, WITHOUT ROWID;

-- What a transaction debits (above 0) and credits (below 0). What was posted stays: a mistake is posted back.
CREATE TABLE postings (
    txn             INTEGER NOT NULL REFERENCES transactions,
    position        INTEGER NOT NULL,
    account         INTEGER NOT NULL REFERENCES accounts,
    -- In whose name a receivables account is posted to, and nothing else.
    customer        INTEGER REFERENCES customers,
    amount          INTEGER NOT NULL CHECK (amount <> 0 AND amount BETWEEN -9999999999999 AND 9999999999999),
    PRIMARY KEY (txn, position)
) STRICT, WITHOUT ROWID;

CREATE TRIGGER postings_keep_balances AFTER INSERT ON postings BEGIN
    SELECT RAISE(ABORT, 'an account of this type is never posted to')
        FROM accounts JOIN account_types USING (type)
        WHERE accounts.number = new.account AND normal_side IS NULL;
    SELECT RAISE(ABORT, 'receivables are posted to in a customer''s name, and nothing else is')
        FROM accounts
        WHERE number = new.account AND (type = 'AccountsReceivable') <> (new.customer IS NOT NULL);
    UPDATE accounts SET balance = balance + new.amount WHERE number = new.account;
    UPDATE customers SET balance = balance + new.amount WHERE number = new.customer;
    UPDATE transactions SET difference = difference + new.amount WHERE number = new.txn;
END;
CREATE TRIGGER postings_stay BEFORE UPDATE ON postings BEGIN
    SELECT RAISE(ABORT, 'what was posted stays');
END;
CREATE TRIGGER postings_are_kept BEFORE DELETE ON postings BEGIN
    SELECT RAISE(ABORT, 'what was posted stays');
END;

-- How much of a received payment paid which invoice.
CREATE TABLE applied_payments (
    payment         INTEGER NOT NULL REFERENCES transactions,
    invoice         INTEGER NOT NULL REFERENCES transactions,
    amount          INTEGER NOT NULL CHECK (amount > 0),
    PRIMARY KEY (payment, invoice)
) STRICT, WITHOUT ROWID;
CREATE INDEX applied_by_invoice ON applied_payments (invoice);

CREATE TRIGGER applied_payments_lower_what_remains AFTER INSERT ON applied_payments BEGIN
    SELECT RAISE(ABORT, 'a payment pays invoices')
        WHERE (SELECT kind FROM transactions WHERE number = new.payment) <> 'ReceivePayment'
           OR (SELECT kind FROM transactions WHERE number = new.invoice) <> 'Invoice';
    UPDATE transactions SET remaining = remaining - new.amount WHERE number IN (new.payment, new.invoice);
END;
CREATE TRIGGER applied_payments_stay BEFORE UPDATE ON applied_payments BEGIN
    SELECT RAISE(ABORT, 'what was applied stays');
END;
CREATE TRIGGER applied_payments_are_kept BEFORE DELETE ON applied_payments BEGIN
    SELECT RAISE(ABORT, 'what was applied stays');
END;

-- What a card transaction's terminal reported; of a card number only the last four digits.
CREATE TABLE card_fields (
    txn             INTEGER NOT NULL REFERENCES transactions,
    name            TEXT NOT NULL,
    value           TEXT NOT NULL,
    PRIMARY KEY (txn, name)
) STRICT, WITHOUT ROWID;

-- Values that add-ins keep under a category and a number.
CREATE TABLE data_file_records (
    category        TEXT NOT NULL,
    number          INTEGER NOT NULL CHECK (number BETWEEN -2147483648 AND 2147483647),
    data_version    INTEGER NOT NULL CHECK (data_version BETWEEN -2147483648 AND 2147483647),
    PRIMARY KEY (category, number)
) STRICT, WITHOUT ROWID;

CREATE TABLE data_file_properties (
    category        TEXT NOT NULL,
    number          INTEGER NOT NULL,
    name            TEXT NOT NULL,
    kind            TEXT NOT NULL,
    value           TEXT NOT NULL,
    PRIMARY KEY (category, number, name),
    FOREIGN KEY (category, number) REFERENCES data_file_records ON DELETE CASCADE
) STRICT, WITHOUT ROWID;
