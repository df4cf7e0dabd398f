SELECT 'it''s', "a" FROM t -- don't
WHERE x <> 1e AND y LIKE 'a/*%';
