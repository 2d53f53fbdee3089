-- The bookmarks of the profile "Familie": one, beside empty roots.
INSERT INTO moz_places (id, url, title, guid) VALUES
  (1, 'https://www.example.org/kochen', 'Kochen', 'place______1');
INSERT INTO moz_bookmarks (id, type, fk, parent, position, title, dateAdded, lastModified, guid) VALUES
  (10, 1, 1, 2, 0, 'Kochen', 1768381201000000, 1768381201000000, 'bookmark__10');
