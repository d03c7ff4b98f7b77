-- The tables of the store. Column order is part of the definition: most inserts are positional.
--
-- A statement ends at a line that holds nothing but "^"; comments stand outside statements, each on its own line.
--
-- Text compares by code point (the plain collation of UTF8), so letter case counts, and UPPER still knows every
-- alphabet. Blanks at the end do not count when whole texts are compared: 'ES ' is the same name as 'ES'. LIKE and
-- STARTING WITH take them for characters like any other.
--
-- Only keys are NOT NULL, because bound inserts may leave any other column empty. There are no foreign keys on
-- purpose: a calendar, setting or session may be removed while something still points at it, and the delete
-- procedures guard the rest.

ALTER DATABASE SET DEFAULT CHARACTER SET UTF8
^

-- One row tells which version of this definition the database holds. It is written last, so a database without
-- it was never completed.
CREATE TABLE SCHEMA_INFO (
    SCHEMA_VERSION  INTEGER NOT NULL,
    CREATED_AT      TIMESTAMP DEFAULT CURRENT_TIMESTAMP NOT NULL,
    SINGLE_ROW      SMALLINT DEFAULT 1 NOT NULL,
    CONSTRAINT SCHEMA_INFO_KEY PRIMARY KEY (SINGLE_ROW),
    CONSTRAINT SCHEMA_INFO_SINGLE_ROW CHECK (SINGLE_ROW = 1)
)
^

-- All keys of all tables come from this one sequence.
CREATE SEQUENCE GLOBAL_KEY
^

-- STRIKE_PRICE is a FLOAT, as the batch insert declares it, so that every way of reading a strike and its text
-- gives the same number.
CREATE TABLE PORTFOLIO (
    SYMBOL             INTEGER NOT NULL,
    SYMBOL_NAME        VARCHAR(31),
    SYMBOL_ROOT        VARCHAR(31),
    DESCRIPTION        VARCHAR(63),
    CUSIP              VARCHAR(12),
    CATEGORY           SMALLINT,
    DATA_FEED          INTEGER,
    EXCHANGE           INTEGER,
    SETTING_TYPE       SMALLINT,
    SETTING            INTEGER,
    SESSION_TYPE       SMALLINT,
    CUSTOM_SESSION     INTEGER,
    TEMPLATE_SESSION   INTEGER,
    CONTRACT_MONTH     SMALLINT,
    CONTRACT_YEAR      SMALLINT,
    STRIKE_PRICE       FLOAT,
    CALL_PUT           SMALLINT,
    MARGIN             INTEGER,
    EXPIRATION_DATE    DATE,
    EXPIRED            SMALLINT,
    EXPIRATION_RULE    SMALLINT,
    FIRST_NOTICE_DATE  DATE,
    DELIVERY           DATE,
    CONSTRAINT PORTFOLIO_KEY PRIMARY KEY (SYMBOL)
)
^

-- The twin of PORTFOLIO: the same statements run on both, with only the table's name exchanged.
CREATE TABLE DICTIONARY (
    SYMBOL             INTEGER NOT NULL,
    SYMBOL_NAME        VARCHAR(31),
    SYMBOL_ROOT        VARCHAR(31),
    DESCRIPTION        VARCHAR(63),
    CUSIP              VARCHAR(12),
    CATEGORY           SMALLINT,
    DATA_FEED          INTEGER,
    EXCHANGE           INTEGER,
    SETTING_TYPE       SMALLINT,
    SETTING            INTEGER,
    SESSION_TYPE       SMALLINT,
    CUSTOM_SESSION     INTEGER,
    TEMPLATE_SESSION   INTEGER,
    CONTRACT_MONTH     SMALLINT,
    CONTRACT_YEAR      SMALLINT,
    STRIKE_PRICE       FLOAT,
    CALL_PUT           SMALLINT,
    MARGIN             INTEGER,
    EXPIRATION_DATE    DATE,
    EXPIRED            SMALLINT,
    EXPIRATION_RULE    SMALLINT,
    FIRST_NOTICE_DATE  DATE,
    DELIVERY           DATE,
    CONSTRAINT DICTIONARY_KEY PRIMARY KEY (SYMBOL)
)
^

-- SYMBOL repeats the key under the name by which cursors look it up. A computed column takes no part in
-- positional inserts, so these give fourteen values.
CREATE TABLE CUSTOM_FUTURES (
    CF                 INTEGER NOT NULL,
    SYMBOL_NAME        VARCHAR(31),
    SYMBOL_ROOT        VARCHAR(31),
    CF_CODE            VARCHAR(126),
    DESCRIPTION        VARCHAR(126),
    CATEGORY           SMALLINT,
    DATA_FEED          INTEGER,
    EXCHANGE           INTEGER,
    SETTING_TYPE       SMALLINT,
    SETTING            INTEGER,
    SESSION_TYPE       SMALLINT,
    CUSTOM_SESSION     INTEGER,
    TEMPLATE_SESSION   INTEGER,
    MARGIN             INTEGER,
    SYMBOL             COMPUTED BY (CF),
    CONSTRAINT CUSTOM_FUTURES_KEY PRIMARY KEY (CF)
)
^

-- A removed feed stays as a row with DELETED 1, so that registering its CLSID again gives it its old key. Nothing
-- belongs to it by then: a feed that a symbol or a custom future uses is not removed.
CREATE TABLE DATA_FEEDS (
    DATA_FEED             INTEGER NOT NULL,
    DATA_FEED_NAME        VARCHAR(31),
    DATA_FEED_DLL_NAME    VARCHAR(255),
    CLSID                 VARCHAR(63),
    PRIMARY_INSTANCE      SMALLINT,
    ACTIVATED             SMALLINT,
    DELETED               SMALLINT,
    ASCII                 SMALLINT,
    DATA_FEED_SHORT_NAME  VARCHAR(31),
    CONSTRAINT DATA_FEEDS_KEY PRIMARY KEY (DATA_FEED)
)
^

-- The time zone stands unpacked: biases in minutes, the two changes as month, weekday, week of the month and time.
CREATE TABLE EXCHANGES (
    EXCHANGE              INTEGER NOT NULL,
    EXCHANGE_NAME         VARCHAR(12),
    HOLIDAY               INTEGER,
    SETTING               INTEGER,
    SESSION               INTEGER,
    TIME_ZONE             INTEGER,
    MAP_ID                VARCHAR(63),
    USE_DAYLIGHT          SMALLINT,
    BIAS                  INTEGER,
    STANDARD_BIAS         INTEGER,
    STANDARD_DAY_OF_WEEK  INTEGER,
    STANDARD_DAY          INTEGER,
    STANDARD_MONTH        INTEGER,
    STANDARD_TIME         TIME,
    DAYLIGHT_BIAS         INTEGER,
    DAYLIGHT_DAY_OF_WEEK  INTEGER,
    DAYLIGHT_DAY          INTEGER,
    DAYLIGHT_MONTH        INTEGER,
    DAYLIGHT_TIME         TIME,
    DESCRIPTION           VARCHAR(255),
    CONSTRAINT EXCHANGES_KEY PRIMARY KEY (EXCHANGE)
)
^

CREATE TABLE SETTINGS (
    SETTING       INTEGER NOT NULL,
    PRICE_SCALE   INTEGER,
    POINT_VALUE   FLOAT,
    DAILY_LIMIT   INTEGER,
    MIN_MOVEMENT  FLOAT,
    CONSTRAINT SETTINGS_KEY PRIMARY KEY (SETTING)
)
^

CREATE TABLE SESSIONS (
    SESSION       INTEGER NOT NULL,
    SESSION_TYPE  INTEGER,
    SESSION_NAME  VARCHAR(63),
    TIME_ZONE     INTEGER,
    CONSTRAINT SESSIONS_KEY PRIMARY KEY (SESSION)
)
^

-- Days are day numbers, times are seconds of the day. The last three go into the sessions text as 6, 7, 5.
CREATE TABLE SESSION_DETAILS (
    SESSION     INTEGER NOT NULL,
    START_DAY   INTEGER,
    START_TIME  INTEGER,
    END_DAY     INTEGER,
    END_TIME    INTEGER,
    VALUE5      INTEGER,
    VALUE6      INTEGER,
    VALUE7      INTEGER
)
^

CREATE TABLE HOLIDAYS (
    HOLIDAY       INTEGER NOT NULL,
    HOLIDAY_NAME  VARCHAR(63),
    CONSTRAINT HOLIDAYS_KEY PRIMARY KEY (HOLIDAY)
)
^

CREATE TABLE HOLIDAY_DETAILS (
    HOLIDAY              INTEGER NOT NULL,
    HOLIDAY_DESCRIPTION  VARCHAR(63),
    HOLIDAY_START_DATE   DATE,
    HOLIDAY_END_DATE     DATE
)
^

-- OFFSET is a reserved word and has to be quoted wherever it names this column.
CREATE TABLE EXPIRATION_RULES (
    ID                     INTEGER NOT NULL,
    NAME                   VARCHAR(126),
    "OFFSET"               INTEGER,
    OFFSETTYPE             INTEGER,
    EXPIRATIONDATEMETHOD   INTEGER,
    BYDAYSNUMBER           INTEGER,
    BYDAYSMONTHTYPE        INTEGER,
    BYDAYSOFWEEKNUMBER     INTEGER,
    DAYOFWEEK              INTEGER,
    BYDAYSOFWEEKMONTHTYPE  INTEGER,
    CONSTRAINT EXPIRATION_RULES_KEY PRIMARY KEY (ID)
)
^

CREATE TABLE CURRENCY (
    ID             INTEGER NOT NULL,
    CURRENCY_CODE  INTEGER,
    CONSTRAINT CURRENCY_KEY PRIMARY KEY (ID)
)
^

-- Which symbol is read from which text file, and how the file's lines are to be read.
CREATE TABLE ASC_MAP (
    ID                 INTEGER NOT NULL,
    SYMBOL             INTEGER,
    FILE_NAME          VARCHAR(255),
    FILE_TYPE          INTEGER,
    BAR_INTERVAL       INTEGER,
    HEADER_LINES       INTEGER,
    FIELD_SEPARATOR    VARCHAR(15),
    DECIMAL_SEPARATOR  VARCHAR(15),
    DATE_FORMAT        VARCHAR(31),
    TIME_FORMAT        VARCHAR(31),
    FILE_TIME_ZONE     INTEGER,
    START_DATE         DATE,
    END_DATE           DATE,
    FLAGS              INTEGER,
    CONSTRAINT ASC_MAP_KEY PRIMARY KEY (ID)
)
^

-- The fields of one mapped file in the order in which they stand on its lines.
CREATE TABLE ASC_TEMPLATES (
    ID           INTEGER NOT NULL,
    FIELD_ORDER  INTEGER,
    FIELD_TYPE   INTEGER,
    FIELD_NAME   VARCHAR(63)
)
^
