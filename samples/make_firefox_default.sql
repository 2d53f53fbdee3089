-- The bookmarks of the profile "default": what bookmarks of real people have, each at least once.
INSERT INTO moz_places (id, url, title, guid) VALUES
  (1,  'https://www.example.org/',                        'Example',        'place______1'),
  (2,  'https://www.example.org/gr%C3%B6%C3%9Fe?a=1&b=2',  'Größe',          'place______2'),
  (3,  'https://www.example.com/a|b\c',                   'Sonderzeichen',  'place______3'),
  (4,  'https://müller.example/straße',                   'Müller',         'place______4'),
  (5,  'https://www.example.net/quotes?q="x"',            'Quotes',         'place______5'),
  (6,  'https://www.example.net/untitled',                NULL,             'place______6'),
  (7,  'javascript:alert(''100 %'')',                     NULL,             'place______7'),
  (8,  'place:sort=8&maxResults=10',                      NULL,             'place______8'),
  (9,  'https://www.example.org/first',                   'First',          'place______9'),
  (10, 'https://www.example.org/second',                  'Second',         'place_____10'),
  (11, 'https://www.example.org/emoji',                   'Emoji',          'place_____11'),
  (12, 'file:///C:/Daten/Übersicht.html',                 NULL,             'place_____12');

INSERT INTO moz_bookmarks (id, type, fk, parent, position, title, dateAdded, lastModified, guid) VALUES
  -- The menu.
  (10, 1, 1,    2,  0, 'Example',                          1768381201000000, 1768467601123456, 'bookmark__10'),
  (11, 3, NULL, 2,  1, NULL,                               1768381202000000, 1768381202000000, 'bookmark__11'),
  (12, 2, NULL, 2,  2, 'Größen & Maße',                    1768381203000000, 1768381203000000, 'bookmark__12'),
  (13, 1, 2,    12, 0, 'Größe "XL", Übermaß',              1768381204000000, 0,                'bookmark__13'),
  (14, 2, NULL, 12, 1, 'Innen, außen',                     1768381205000000, 1768381205000000, 'bookmark__14'),
  (15, 1, 4,    14, 0, 'Müller''s Straße',                 1768381206000000, 1768381206000000, 'bookmark__15'),
  (16, 2, NULL, 14, 1, 'Tief',                             1768381207000000, 1768381207000000, 'bookmark__16'),
  (17, 1, 3,    16, 0, 'a|b\c',                            1768381208000000, 1768381208000000, 'bookmark__17'),
  (18, 1, 6,    2,  3, NULL,                               1768381209000000, 1768381209000000, 'bookmark__18'),
  (19, 1, 7,    2,  4, '',                                 1768381210000000, 1768381210000000, 'bookmark__19'),
  -- A folder that nobody gave a name, and two of one name.
  (20, 2, NULL, 2,  5, '',                                 1768381211000000, 1768381211000000, 'bookmark__20'),
  (21, 1, 5,    20, 0, 'Quotes: "x" and ''y''',            1768381212000000, 1768381212000000, 'bookmark__21'),
  (22, 2, NULL, 2,  6, 'Doppelt',                          1768381213000000, 1768381213000000, 'bookmark__22'),
  (23, 1, 9,    22, 0, 'Erster',                           1768381214000000, 1768381214000000, 'bookmark__23'),
  (24, 2, NULL, 2,  7, 'Doppelt',                          1768381215000000, 1768381215000000, 'bookmark__24'),
  (25, 1, 10,   24, 0, 'Zweiter',                          1768381216000000, 1768381216000000, 'bookmark__25'),
  -- The toolbar, its rows not in the order of their ids.
  (30, 1, 8,    3,  1, 'Most Visited',                     1768381217000000, 1768381217000000, 'bookmark__30'),
  (31, 1, 11,   3,  0, 'Fire 🦊 & 5 €',                    1768381218000000, 1768381218000000, 'bookmark__31'),
  -- A tag of two bookmarks; its rows have no title.
  (40, 2, NULL, 4,  0, 'wichtig',                          1768381219000000, 1768381219000000, 'bookmark__40'),
  (41, 1, 1,    40, 0, NULL,                               1768381220000000, 1768381220000000, 'bookmark__41'),
  (42, 1, 2,    40, 1, NULL,                               1768381221000000, 1768381221000000, 'bookmark__42'),
  -- Never sorted: a local file, and a row of which nothing is left to show.
  (50, 1, 12,   5,  0, 'Übersicht',                        1768381222000000, 1768381222000000, 'bookmark__50'),
  (51, 1, NULL, 5,  1, NULL,                               1768381223000000, 1768381223000000, 'bookmark__51');
