-- The last statement of a creation. Terminator and comments as in tables.sql.

INSERT INTO SCHEMA_INFO (SCHEMA_VERSION) VALUES (2)
^
