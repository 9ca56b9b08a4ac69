#ifndef SAMPLE_P_H
#define SAMPLE_P_H

#include <cstddef>

// The sample content. Outputs, publishing houses and periodicals are invented. The books are real,
// with their authors and years; page counts are those of common editions.
namespace TQServerInternal::Sample {

struct Output
{
    const char *name;  // ASCII: jobs refer to outputs by name
    const char *technology;
    int resolution;  // dots per inch
    double width;  // points
    double height;
    const char *colours;  // one on each line
    const char *rulings;  // lines per inch
    const char *location;
    const char *installed;
};

constexpr Output OUTPUTS[] = {
    { "Digital Press Colour", "digital press", 1200, 935.43, 1303.94,
        "Cyan\nMagenta\nYellow\nBlack\nOrange\nViolet", "175 200", "Hall 2", "2021-09-06" },
    { "Digital Press Mono", "digital press", 2400, 907.09, 1275.59, "Black", "85 106 133", "Hall 2",
        "2019-02-18" },
    { "Imagesetter 70", "imagesetter", 2540, 1984.25, 2834.65, "Cyan\nMagenta\nYellow\nBlack",
        "133 150 175", "Dark room", "2004-05-24" },
    { "Platesetter A1 North", "platesetter", 2400, 1757.48, 2551.18,
        "Cyan\nMagenta\nYellow\nBlack\nSpot 1\nSpot 2", "150 175 200 240", "Hall 1, north side",
        "2016-11-07" },
    { "Proofer 44", "proofer", 1440, 3174.8, 5669.29, "Cyan\nMagenta\nYellow\nBlack", nullptr,
        "Colour room", "2022-03-14" },
};

struct Owner
{
    const char *name;
    const char *city;
    const char *country;
    int founded;
};

constexpr Owner OWNERS[] = {
    { "Lantern Row Press", "London", "United Kingdom", 1908 },
    { "Northmoor Classics", "Edinburgh", "United Kingdom", 1931 },
    { "Tidewater House", "Boston", "United States", 1894 },
    { "Éditions du Vieux Quai", "Rouen", "France", 1922 },
    { "Verlag Lindenhöhe", "Leipzig", "Germany", 1887 },
    { "Edições Alameda Nova", "Lisboa", "Portugal", 1946 },
    { "Casa Editora El Olivar", "Sevilla", "España", 1953 },
};

struct Book
{
    int owner;  // index into OWNERS
    const char *title;
    const char *author;
    int year;  // first published
    int pages;
    const char *language;
    const char *subjects;  // one on each line
};

constexpr Book BOOKS[] = {
    { 0, "Middlemarch", "George Eliot", 1871, 880, "en", "Novel\nProvincial life" },
    { 0, "Pride and Prejudice", "Jane Austen", 1813, 432, "en", "Novel\nManners" },
    { 0, "Emma", "Jane Austen", 1815, 474, "en", "Novel\nManners" },
    { 0, "Persuasion", "Jane Austen", 1817, 249, "en", "Novel\nManners" },
    { 0, "Jane Eyre", "Charlotte Brontë", 1847, 532, "en", "Novel\nBildungsroman" },
    { 0, "Wuthering Heights", "Emily Brontë", 1847, 416, "en", "Novel\nGothic" },
    { 0, "Great Expectations", "Charles Dickens", 1861, 544, "en", "Novel\nBildungsroman" },
    { 0, "Bleak House", "Charles Dickens", 1853, 1017, "en", "Novel\nLaw" },
    { 0, "David Copperfield", "Charles Dickens", 1850, 882, "en", "Novel\nBildungsroman" },
    { 0, "Vanity Fair", "William Makepeace Thackeray", 1848, 867, "en", "Novel\nSatire" },
    { 0, "Frankenstein", "Mary Shelley", 1818, 280, "en", "Novel\nGothic\nScience" },
    { 0, "Dracula", "Bram Stoker", 1897, 418, "en", "Novel\nGothic" },
    { 0, "The Picture of Dorian Gray", "Oscar Wilde", 1890, 254, "en", "Novel\nGothic" },
    { 0, "The Time Machine", "H. G. Wells", 1895, 118, "en", "Novel\nScience" },
    { 0, "The War of the Worlds", "H. G. Wells", 1898, 192, "en", "Novel\nScience" },
    { 0, "Gulliver’s Travels", "Jonathan Swift", 1726, 306, "en", "Satire\nTravel" },
    { 0, "Robinson Crusoe", "Daniel Defoe", 1719, 320, "en", "Novel\nSea" },
    { 1, "Tess of the d’Urbervilles", "Thomas Hardy", 1891, 518, "en", "Novel\nTragedy" },
    { 1, "Far from the Madding Crowd", "Thomas Hardy", 1874, 433, "en", "Novel\nPastoral" },
    { 1, "Treasure Island", "Robert Louis Stevenson", 1883, 292, "en", "Novel\nSea" },
    { 1, "Kidnapped", "Robert Louis Stevenson", 1886, 288, "en", "Novel\nHistory" },
    { 1, "Ivanhoe", "Walter Scott", 1819, 544, "en", "Novel\nHistory" },
    { 1, "Waverley", "Walter Scott", 1814, 560, "en", "Novel\nHistory" },
    { 1, "The Moonstone", "Wilkie Collins", 1868, 528, "en", "Novel\nCrime" },
    { 1, "The Woman in White", "Wilkie Collins", 1860, 672, "en", "Novel\nCrime" },
    { 1, "North and South", "Elizabeth Gaskell", 1855, 521, "en", "Novel\nIndustry" },
    { 1, "Cranford", "Elizabeth Gaskell", 1853, 257, "en", "Novel\nProvincial life" },
    { 1, "Lord Jim", "Joseph Conrad", 1900, 417, "en", "Novel\nSea" },
    { 1, "The Life and Opinions of Tristram Shandy, Gentleman", "Laurence Sterne", 1759, 688, "en",
        "Novel\nSatire" },
    { 2, "Moby-Dick", "Herman Melville", 1851, 720, "en", "Novel\nSea" },
    { 2, "The Scarlet Letter", "Nathaniel Hawthorne", 1850, 272, "en", "Novel\nHistory" },
    { 2, "Little Women", "Louisa May Alcott", 1868, 504, "en", "Novel\nFamily" },
    { 2, "Walden", "Henry David Thoreau", 1854, 352, "en", "Essay\nNature" },
    { 2, "Adventures of Huckleberry Finn", "Mark Twain", 1884, 366, "en", "Novel\nTravel" },
    { 2, "The Portrait of a Lady", "Henry James", 1881, 656, "en", "Novel\nManners" },
    { 2, "The House of Mirth", "Edith Wharton", 1905, 351, "en", "Novel\nManners" },
    { 3, "Les Misérables", "Victor Hugo", 1862, 1462, "fr", "Novel\nHistory" },
    { 3, "Notre-Dame de Paris", "Victor Hugo", 1831, 624, "fr", "Novel\nHistory" },
    { 3, "Madame Bovary", "Gustave Flaubert", 1857, 384, "fr", "Novel\nProvincial life" },
    { 3, "L’Éducation sentimentale", "Gustave Flaubert", 1869, 512, "fr", "Novel" },
    { 3, "Germinal", "Émile Zola", 1885, 592, "fr", "Novel\nIndustry" },
    { 3, "Thérèse Raquin", "Émile Zola", 1867, 256, "fr", "Novel\nCrime" },
    { 3, "Le Père Goriot", "Honoré de Balzac", 1835, 336, "fr", "Novel\nFamily" },
    { 3, "Eugénie Grandet", "Honoré de Balzac", 1833, 240, "fr", "Novel\nFamily" },
    { 3, "Candide, ou l’Optimisme", "Voltaire", 1759, 144, "fr", "Satire\nTravel" },
    { 3, "Vingt mille lieues sous les mers", "Jules Verne", 1870, 624, "fr", "Novel\nSea" },
    { 3, "Le Comte de Monte-Cristo", "Alexandre Dumas", 1844, 1312, "fr", "Novel\nHistory" },
    { 3, "Bel-Ami", "Guy de Maupassant", 1885, 416, "fr", "Novel\nSatire" },
    { 4, "Die Leiden des jungen Werthers", "Johann Wolfgang von Goethe", 1774, 144, "de",
        "Novel\nLetters" },
    { 4, "Faust. Eine Tragödie", "Johann Wolfgang von Goethe", 1808, 208, "de", "Drama" },
    { 4, "Effi Briest", "Theodor Fontane", 1895, 352, "de", "Novel\nManners" },
    { 4, "Der Schimmelreiter", "Theodor Storm", 1888, 160, "de", "Novella\nSea" },
    { 4, "Die Marquise von O…", "Heinrich von Kleist", 1808, 64, "de", "Novella" },
    { 4, "Also sprach Zarathustra", "Friedrich Nietzsche", 1883, 352, "de", "Philosophy" },
    { 5, "Os Maias", "Eça de Queirós", 1888, 720, "pt", "Novel\nFamily" },
    { 5, "Memórias Póstumas de Brás Cubas", "Machado de Assis", 1881, 256, "pt", "Novel\nSatire" },
    { 5, "Dom Casmurro", "Machado de Assis", 1899, 272, "pt", "Novel" },
    { 6, "Don Quijote de la Mancha", "Miguel de Cervantes", 1605, 1056, "es", "Novel\nSatire" },
    { 6, "La Regenta", "Leopoldo Alas", 1884, 928, "es", "Novel\nProvincial life" },
    { 6, "Fortunata y Jacinta", "Benito Pérez Galdós", 1887, 1120, "es", "Novel\nManners" },
};

struct Periodical
{
    const char *name;
    int issues;
    int months;  // from one issue to the next
};

constexpr Periodical PERIODICALS[] = {
    { "Revue du Métier", 12, 1 },
    { "The Harbour Gazette", 13, 1 },
    { "Plate & Proof", 12, 3 },
};

struct Profile
{
    const char *file;  // where icc-profiles-free installs it
    const char *deviceClass;
    const char *colourSpace;
};

constexpr const char *PROFILE_FOLDER = "/usr/share/color/icc/";
constexpr Profile PROFILES[] = {
    { "sRGB.icc", "mntr", "RGB" },
    { "compatibleWithAdobeRGB1998.icc", "mntr", "RGB" },
    { "LStar-RGB.icc", "mntr", "RGB" },
    { "Gray.icc", "mntr", "GRAY" },
    { "Gray-CIE_L.icc", "mntr", "GRAY" },
    { "ITULab.icc", "spac", "Lab" },
    { "LCMSLABI.ICM", "mntr", "Lab" },
    { "LCMSXYZI.ICM", "mntr", "XYZ" },
};
// Indexes into PROFILES: those for colour come first, then those for gray.
constexpr std::size_t FIRST_GRAY = 3;
constexpr std::size_t GRAYS = 2;

}  // namespace TQServerInternal::Sample

#endif
