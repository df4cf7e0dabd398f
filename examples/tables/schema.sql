-- Made from schema.tl.
BEGIN;

CREATE TABLE customer (
    id INTEGER NOT NULL,
    name TEXT NOT NULL,
    email TEXT NOT NULL,
    city TEXT,
    PRIMARY KEY (id)
);

CREATE TABLE invoice (
    id INTEGER NOT NULL,
    customer_id INTEGER NOT NULL,
    amount NUMERIC NOT NULL,
    paid_on TEXT,
    PRIMARY KEY (id)
);

COMMIT;
