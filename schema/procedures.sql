-- What the store asks the database to compute. Terminator and comments as in tables.sql.
--
-- Nothing here writes but the two delete procedures, so all the others run in a read-only transaction.
--
-- The machine's own time zone is not known to the database. Whoever opens a connection leaves it in the session
-- variables LOCAL_BIAS (minutes, as text) and LOCAL_TIME_ZONE (a time-zone text); without them GMT is taken.

CREATE EXCEPTION SESSION_NOT_PRESENTABLE 'The session cannot be written as text.'
^

CREATE EXCEPTION ZONE_NOT_PRESENTABLE 'The time zone cannot be written as text.'
^

-- The exchange as clients see it: the seventeen numbers of its time zone in one text. A zone that has no
-- daylight saving shows it by month 0 of the change to standard time, whatever the column holds. Fractions of
-- a second are not kept, hence the fixed ".0000".
CREATE VIEW EXCHANGE_INFO (
    EXCHANGE, EXCHANGE_NAME, DESCRIPTION, HOLIDAY, SETTING, SESSION, TIME_ZONE, MAP_ID, BIAS,
    EXCHANGE_TIME_ZONE_INFORMATION
) AS
SELECT
    E.EXCHANGE, E.EXCHANGE_NAME, E.DESCRIPTION, E.HOLIDAY, E.SETTING, E.SESSION, E.TIME_ZONE, E.MAP_ID,
    COALESCE(E.BIAS, 0),
    CAST(
        COALESCE(E.BIAS, 0) || ',' ||
        COALESCE(E.STANDARD_BIAS, 0) || ',' ||
        IIF(COALESCE(E.USE_DAYLIGHT, 0) = 0, 0, COALESCE(E.STANDARD_MONTH, 0)) || ',' ||
        COALESCE(E.STANDARD_DAY_OF_WEEK, 0) || ',' ||
        COALESCE(E.STANDARD_DAY, 0) || ',' ||
        SUBSTRING(CAST(COALESCE(E.STANDARD_TIME, TIME '00:00:00') AS VARCHAR(13)) FROM 1 FOR 8) || '.0000,' ||
        COALESCE(E.DAYLIGHT_BIAS, 0) || ',' ||
        COALESCE(E.DAYLIGHT_MONTH, 0) || ',' ||
        COALESCE(E.DAYLIGHT_DAY_OF_WEEK, 0) || ',' ||
        COALESCE(E.DAYLIGHT_DAY, 0) || ',' ||
        SUBSTRING(CAST(COALESCE(E.DAYLIGHT_TIME, TIME '00:00:00') AS VARCHAR(13)) FROM 1 FOR 8) || '.0000'
        AS VARCHAR(128))
FROM EXCHANGES E
^

-- The next key. A sequence stands outside transactions: the value is new at each call, inside a long-lived and
-- inside a read-only transaction too, and is not given back by a rollback.
CREATE PROCEDURE GENERATE_ID (STEP INTEGER)
RETURNS (GENERATED_ID INTEGER)
AS
BEGIN
    GENERATED_ID = GEN_ID(GLOBAL_KEY, :STEP);
    SUSPEND;
END
^

-- Marks the feed as deleted, unless something still belongs to it.
CREATE PROCEDURE DELETE_DATA_FEED (DATA_FEED_KEY INTEGER)
RETURNS (DELETED INTEGER)
AS
BEGIN
    DELETED = 0;
    IF (NOT EXISTS (SELECT 1 FROM PORTFOLIO WHERE DATA_FEED = :DATA_FEED_KEY)
        AND NOT EXISTS (SELECT 1 FROM DICTIONARY WHERE DATA_FEED = :DATA_FEED_KEY)
        AND NOT EXISTS (SELECT 1 FROM CUSTOM_FUTURES WHERE DATA_FEED = :DATA_FEED_KEY)) THEN
    BEGIN
        UPDATE DATA_FEEDS F SET F.DELETED = 1 WHERE F.DATA_FEED = :DATA_FEED_KEY;
        IF (ROW_COUNT > 0) THEN
            DELETED = 1;
    END
    SUSPEND;
END
^

-- Removes the exchange, unless something is still traded there. Its setting and session are the caller's to remove.
CREATE PROCEDURE DELETE_EXCHANGE (EXCHANGE_KEY INTEGER)
RETURNS (DELETED INTEGER)
AS
BEGIN
    DELETED = 0;
    IF (NOT EXISTS (SELECT 1 FROM PORTFOLIO WHERE EXCHANGE = :EXCHANGE_KEY)
        AND NOT EXISTS (SELECT 1 FROM DICTIONARY WHERE EXCHANGE = :EXCHANGE_KEY)
        AND NOT EXISTS (SELECT 1 FROM CUSTOM_FUTURES WHERE EXCHANGE = :EXCHANGE_KEY)) THEN
    BEGIN
        DELETE FROM EXCHANGES WHERE EXCHANGE = :EXCHANGE_KEY;
        IF (ROW_COUNT > 0) THEN
            DELETED = 1;
    END
    SUSPEND;
END
^

-- One exchange, or all of them for key 0.
CREATE PROCEDURE SELECT_EXCHANGE (EXCHANGE_KEY INTEGER)
RETURNS (
    EXCHANGE                        INTEGER,
    EXCHANGE_NAME                   VARCHAR(12),
    DESCRIPTION                     VARCHAR(255),
    HOLIDAY                         INTEGER,
    SETTING                         INTEGER,
    SESSION                         INTEGER,
    TIME_ZONE                       INTEGER,
    MAP_ID                          VARCHAR(63),
    EXCHANGE_TIME_ZONE_INFORMATION  VARCHAR(128)
)
AS
BEGIN
    FOR
        SELECT E.EXCHANGE, E.EXCHANGE_NAME, E.DESCRIPTION, E.HOLIDAY, E.SETTING, E.SESSION, E.TIME_ZONE, E.MAP_ID,
            E.EXCHANGE_TIME_ZONE_INFORMATION
        FROM EXCHANGE_INFO E
        WHERE E.EXCHANGE = :EXCHANGE_KEY OR :EXCHANGE_KEY = 0
        ORDER BY E.EXCHANGE
        INTO :EXCHANGE, :EXCHANGE_NAME, :DESCRIPTION, :HOLIDAY, :SETTING, :SESSION, :TIME_ZONE, :MAP_ID,
            :EXCHANGE_TIME_ZONE_INFORMATION
    DO
        SUSPEND;
END
^

-- The trading times of a session in one text: the number of details and ":", then for each detail its start and
-- its end in minutes and the values 6, 7 and 5, separated by "," and closed by ";". A number has at most seven
-- digits and no sign, and the text at most 511 characters; what does not fit is refused, because readers would
-- take a cut text for a shorter trading week.
CREATE FUNCTION SESSION_TEXT (SESSION_KEY INTEGER)
RETURNS VARCHAR(512)
AS
    DECLARE VARIABLE DETAIL_COUNT INTEGER = 0;
    DECLARE VARIABLE DETAILS VARCHAR(1024) = '';
    DECLARE VARIABLE START_MINUTE BIGINT;
    DECLARE VARIABLE END_MINUTE BIGINT;
    DECLARE VARIABLE FIFTH INTEGER;
    DECLARE VARIABLE SIXTH INTEGER;
    DECLARE VARIABLE SEVENTH INTEGER;
BEGIN
    FOR
        SELECT
            (CAST(COALESCE(D.START_DAY, 0) AS BIGINT) * 86400 + COALESCE(D.START_TIME, 0)) / 60,
            (CAST(COALESCE(D.END_DAY, 0) AS BIGINT) * 86400 + COALESCE(D.END_TIME, 0)) / 60,
            COALESCE(D.VALUE5, 0), COALESCE(D.VALUE6, 0), COALESCE(D.VALUE7, 0)
        FROM SESSION_DETAILS D
        WHERE D.SESSION = :SESSION_KEY
        INTO :START_MINUTE, :END_MINUTE, :FIFTH, :SIXTH, :SEVENTH
    DO
    BEGIN
        IF (MINVALUE(START_MINUTE, END_MINUTE, FIFTH, SIXTH, SEVENTH) < 0
            OR MAXVALUE(START_MINUTE, END_MINUTE, FIFTH, SIXTH, SEVENTH) > 9999999) THEN
            EXCEPTION SESSION_NOT_PRESENTABLE 'A detail of session ' || SESSION_KEY ||
                ' has a negative value or one of more than seven digits. Correct the details of the session.';
        DETAIL_COUNT = DETAIL_COUNT + 1;
        DETAILS = DETAILS || START_MINUTE || ',' || END_MINUTE || ',' || SIXTH || ',' || SEVENTH || ',' || FIFTH || ';';
        IF (CHAR_LENGTH(DETAIL_COUNT || ':' || DETAILS) > 511) THEN
            EXCEPTION SESSION_NOT_PRESENTABLE 'Session ' || SESSION_KEY ||
                ' has more details than fit into a text of 511 characters. Remove some of them.';
    END
    RETURN DETAIL_COUNT || ':' || DETAILS;
END
^

-- The time zone in which a session's times are meant: 0 that of this machine, 1 GMT, 2 that of the exchange.
CREATE FUNCTION SESSION_ZONE_TEXT (TIME_ZONE INTEGER, EXCHANGE_ZONE VARCHAR(128))
RETURNS VARCHAR(128)
AS
    DECLARE VARIABLE GMT VARCHAR(128) = '0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000';
BEGIN
    RETURN CASE COALESCE(TIME_ZONE, 0)
        WHEN 0 THEN COALESCE(RDB$GET_CONTEXT('USER_SESSION', 'LOCAL_TIME_ZONE'), GMT)
        WHEN 1 THEN GMT
        WHEN 2 THEN EXCHANGE_ZONE
        ELSE ''
    END;
END
^

-- What a symbol or a custom future has from its exchange, its setting and its session, by the numbers that stand in
-- its row. SETTING_TYPE 0 takes the row's own setting; SESSION_TYPE 0 takes the row's own session and 2 its template;
-- every other type takes the exchange's. Where the exchange, the setting or the session is gone, only what came from
-- there is missing; without an exchange SETTING stays the row's own. A session that cannot be written as text leaves
-- out its text alone: who looks for the symbol must find it, whatever became of its session.
CREATE PROCEDURE EFFECTIVE_TERMS (
    EXCHANGE_KEY      INTEGER,
    SETTING_TYPE      SMALLINT,
    OWN_SETTING       INTEGER,
    SESSION_TYPE      SMALLINT,
    OWN_SESSION       INTEGER,
    TEMPLATE_SESSION  INTEGER
)
RETURNS (
    EXCHANGE_NAME                   VARCHAR(12),
    EXCHANGE_TIME_ZONE_INFORMATION  VARCHAR(128),
    SETTING                         INTEGER,
    PRICE_SCALE                     INTEGER,
    POINT_VALUE                     FLOAT,
    DAILY_LIMIT                     INTEGER,
    MIN_MOVEMENT                    FLOAT,
    SESSIONS_STRING                 VARCHAR(512),
    SESSIONS_TIME_ZONE_INFORMATION  VARCHAR(128),
    EXCHANGE_GMT                    INTEGER,
    LOCAL_GMT                       INTEGER
)
AS
    DECLARE VARIABLE EXCHANGE INTEGER;
    DECLARE VARIABLE EXCHANGE_SETTING INTEGER;
    DECLARE VARIABLE EXCHANGE_SESSION INTEGER;
    DECLARE VARIABLE SESSION INTEGER;
    DECLARE VARIABLE SESSION_ZONE INTEGER;
BEGIN
    LOCAL_GMT = -CAST(COALESCE(RDB$GET_CONTEXT('USER_SESSION', 'LOCAL_BIAS'), '0') AS INTEGER);

    SELECT E.EXCHANGE, E.EXCHANGE_NAME, E.EXCHANGE_TIME_ZONE_INFORMATION, -E.BIAS, E.SETTING, E.SESSION
    FROM EXCHANGE_INFO E
    WHERE E.EXCHANGE = :EXCHANGE_KEY
    INTO :EXCHANGE, :EXCHANGE_NAME, :EXCHANGE_TIME_ZONE_INFORMATION, :EXCHANGE_GMT, :EXCHANGE_SETTING,
        :EXCHANGE_SESSION;

    SETTING = IIF(COALESCE(SETTING_TYPE, 0) = 0, OWN_SETTING, EXCHANGE_SETTING);
    SELECT N.PRICE_SCALE, N.POINT_VALUE, N.DAILY_LIMIT, N.MIN_MOVEMENT
    FROM SETTINGS N
    WHERE N.SETTING = :SETTING
    INTO :PRICE_SCALE, :POINT_VALUE, :DAILY_LIMIT, :MIN_MOVEMENT;
    IF (EXCHANGE IS NULL) THEN
        SETTING = OWN_SETTING;

    SELECT S.SESSION, S.TIME_ZONE
    FROM SESSIONS S
    WHERE S.SESSION = CASE COALESCE(:SESSION_TYPE, 0)
        WHEN 0 THEN :OWN_SESSION WHEN 2 THEN :TEMPLATE_SESSION ELSE :EXCHANGE_SESSION END
    INTO :SESSION, :SESSION_ZONE;
    IF (SESSION IS NOT NULL) THEN
    BEGIN
        BEGIN
            SESSIONS_STRING = SESSION_TEXT(SESSION);
            WHEN EXCEPTION SESSION_NOT_PRESENTABLE DO
                SESSIONS_STRING = NULL;
        END
        SESSIONS_TIME_ZONE_INFORMATION = SESSION_ZONE_TEXT(SESSION_ZONE, EXCHANGE_TIME_ZONE_INFORMATION);
    END
END
^

-- One symbol with its effective setting, which SETTING delivers, beside the one that its row holds, CUSTOM_SETTING.
CREATE PROCEDURE GET_SYMBOL_INFO (SYMBOL_KEY INTEGER)
RETURNS (
    SYMBOL                          INTEGER,
    SYMBOL_NAME                     VARCHAR(31),
    SYMBOL_ROOT                     VARCHAR(31),
    DESCRIPTION                     VARCHAR(63),
    CUSIP                           VARCHAR(12),
    CATEGORY                        SMALLINT,
    DATA_FEED                       INTEGER,
    EXCHANGE                        INTEGER,
    EXCHANGE_NAME                   VARCHAR(12),
    EXCHANGE_TIME_ZONE_INFORMATION  VARCHAR(128),
    SETTING_TYPE                    SMALLINT,
    SETTING                         INTEGER,
    CUSTOM_SETTING                  INTEGER,
    PRICE_SCALE                     INTEGER,
    POINT_VALUE                     FLOAT,
    DAILY_LIMIT                     INTEGER,
    MIN_MOVEMENT                    FLOAT,
    SESSION_TYPE                    SMALLINT,
    CUSTOM_SESSION                  INTEGER,
    TEMPLATE_SESSION                INTEGER,
    SESSIONS_STRING                 VARCHAR(512),
    SESSIONS_TIME_ZONE_INFORMATION  VARCHAR(128),
    STRIKE_PRICE                    FLOAT,
    CONTRACT_MONTH                  SMALLINT,
    CONTRACT_YEAR                   SMALLINT,
    CALL_PUT                        SMALLINT,
    MARGIN                          INTEGER,
    EXPIRATION_DATE                 DATE,
    EXPIRED                         SMALLINT,
    EXPIRATION_RULE                 SMALLINT,
    FIRST_NOTICE_DATE               DATE,
    DELIVERY                        DATE,
    EXCHANGE_GMT                    INTEGER,
    LOCAL_GMT                       INTEGER
)
AS
BEGIN
    FOR
        SELECT P.SYMBOL, P.SYMBOL_NAME, P.SYMBOL_ROOT, P.DESCRIPTION, P.CUSIP, P.CATEGORY, P.DATA_FEED, P.EXCHANGE,
            P.SETTING_TYPE, P.SETTING, P.SESSION_TYPE, P.CUSTOM_SESSION, P.TEMPLATE_SESSION,
            P.STRIKE_PRICE, P.CONTRACT_MONTH, P.CONTRACT_YEAR, P.CALL_PUT, P.MARGIN,
            P.EXPIRATION_DATE, P.EXPIRED, P.EXPIRATION_RULE, P.FIRST_NOTICE_DATE, P.DELIVERY
        FROM PORTFOLIO P
        WHERE P.SYMBOL = :SYMBOL_KEY
        INTO :SYMBOL, :SYMBOL_NAME, :SYMBOL_ROOT, :DESCRIPTION, :CUSIP, :CATEGORY, :DATA_FEED, :EXCHANGE,
            :SETTING_TYPE, :CUSTOM_SETTING, :SESSION_TYPE, :CUSTOM_SESSION, :TEMPLATE_SESSION,
            :STRIKE_PRICE, :CONTRACT_MONTH, :CONTRACT_YEAR, :CALL_PUT, :MARGIN,
            :EXPIRATION_DATE, :EXPIRED, :EXPIRATION_RULE, :FIRST_NOTICE_DATE, :DELIVERY
    DO
    BEGIN
        EXECUTE PROCEDURE EFFECTIVE_TERMS(:EXCHANGE, :SETTING_TYPE, :CUSTOM_SETTING, :SESSION_TYPE, :CUSTOM_SESSION,
            :TEMPLATE_SESSION)
        RETURNING_VALUES :EXCHANGE_NAME, :EXCHANGE_TIME_ZONE_INFORMATION, :SETTING, :PRICE_SCALE, :POINT_VALUE,
            :DAILY_LIMIT, :MIN_MOVEMENT, :SESSIONS_STRING, :SESSIONS_TIME_ZONE_INFORMATION, :EXCHANGE_GMT, :LOCAL_GMT;
        SUSPEND;
    END
END
^

-- One custom future in the same way. The order and types of the columns are binding: a caller takes them by position.
-- Every real zone fits: the longest, with biases of a day, has 61 characters. Nothing keeps other numbers out of
-- EXCHANGES, though, and they are refused here in words rather than by a failed assignment.
CREATE PROCEDURE GET_CF_INFO (CF_KEY INTEGER)
RETURNS (
    CF                              INTEGER,
    SYMBOL_NAME                     VARCHAR(31),
    SYMBOL_ROOT                     VARCHAR(31),
    CF_CODE                         VARCHAR(126),
    DESCRIPTION                     VARCHAR(126),
    CATEGORY                        SMALLINT,
    DATA_FEED                       INTEGER,
    EXCHANGE                        INTEGER,
    EXCHANGE_NAME                   VARCHAR(12),
    EXCHANGE_TIME_ZONE_INFORMATION  VARCHAR(64),
    SETTING_TYPE                    SMALLINT,
    SETTING                         INTEGER,
    CUSTOM_SETTING                  INTEGER,
    PRICE_SCALE                     INTEGER,
    POINT_VALUE                     FLOAT,
    DAILY_LIMIT                     INTEGER,
    MIN_MOVEMENT                    FLOAT,
    SESSION_TYPE                    SMALLINT,
    CUSTOM_SESSION                  INTEGER,
    TEMPLATE_SESSION                INTEGER,
    SESSIONS_STRING                 VARCHAR(512),
    SESSIONS_TIME_ZONE_INFORMATION  VARCHAR(64),
    MARGIN                          INTEGER,
    EXCHANGE_GMT                    INTEGER,
    LOCAL_GMT                       INTEGER
)
AS
    DECLARE VARIABLE EXCHANGE_ZONE VARCHAR(128);
    DECLARE VARIABLE SESSIONS_ZONE VARCHAR(128);
BEGIN
    FOR
        SELECT P.CF, P.SYMBOL_NAME, P.SYMBOL_ROOT, P.CF_CODE, P.DESCRIPTION, P.CATEGORY, P.DATA_FEED, P.EXCHANGE,
            P.SETTING_TYPE, P.SETTING, P.SESSION_TYPE, P.CUSTOM_SESSION, P.TEMPLATE_SESSION, P.MARGIN
        FROM CUSTOM_FUTURES P
        WHERE P.CF = :CF_KEY
        INTO :CF, :SYMBOL_NAME, :SYMBOL_ROOT, :CF_CODE, :DESCRIPTION, :CATEGORY, :DATA_FEED, :EXCHANGE,
            :SETTING_TYPE, :CUSTOM_SETTING, :SESSION_TYPE, :CUSTOM_SESSION, :TEMPLATE_SESSION, :MARGIN
    DO
    BEGIN
        EXECUTE PROCEDURE EFFECTIVE_TERMS(:EXCHANGE, :SETTING_TYPE, :CUSTOM_SETTING, :SESSION_TYPE, :CUSTOM_SESSION,
            :TEMPLATE_SESSION)
        RETURNING_VALUES :EXCHANGE_NAME, :EXCHANGE_ZONE, :SETTING, :PRICE_SCALE, :POINT_VALUE,
            :DAILY_LIMIT, :MIN_MOVEMENT, :SESSIONS_STRING, :SESSIONS_ZONE, :EXCHANGE_GMT, :LOCAL_GMT;
        IF (CHAR_LENGTH(EXCHANGE_ZONE) > 64) THEN
            EXCEPTION ZONE_NOT_PRESENTABLE 'The time zone of exchange ' || EXCHANGE ||
                ' takes more than 64 characters: ' || EXCHANGE_ZONE || '. Correct the time zone of the exchange.';
        EXCHANGE_TIME_ZONE_INFORMATION = EXCHANGE_ZONE;
        SESSIONS_TIME_ZONE_INFORMATION = SESSIONS_ZONE;
        SUSPEND;
    END
END
^

-- The sessions a symbol may trade in, each once: the two that its row names, its exchange's and all templates. The
-- row may name as its template a session that is none by now; it trades in it all the same.
CREATE PROCEDURE GET_AVAILABLE_SESSIONS (SYMBOL_KEY INTEGER)
RETURNS (
    SESSION       INTEGER,
    SESSION_TYPE  INTEGER,
    SESSION_NAME  VARCHAR(63),
    TIME_ZONE     INTEGER
)
AS
    DECLARE VARIABLE OWN_SESSION INTEGER;
    DECLARE VARIABLE SHARED_SESSION INTEGER;
    DECLARE VARIABLE EXCHANGE_SESSION INTEGER;
BEGIN
    FOR
        SELECT P.CUSTOM_SESSION, P.TEMPLATE_SESSION, E.SESSION
        FROM PORTFOLIO P LEFT JOIN EXCHANGES E ON E.EXCHANGE = P.EXCHANGE
        WHERE P.SYMBOL = :SYMBOL_KEY
        INTO :OWN_SESSION, :SHARED_SESSION, :EXCHANGE_SESSION
    DO
        FOR
            SELECT S.SESSION, S.SESSION_TYPE, S.SESSION_NAME, S.TIME_ZONE
            FROM SESSIONS S
            WHERE S.SESSION IN (:OWN_SESSION, :SHARED_SESSION, :EXCHANGE_SESSION) OR S.SESSION_TYPE = 2
            INTO :SESSION, :SESSION_TYPE, :SESSION_NAME, :TIME_ZONE
        DO
            SUSPEND;
END
^
