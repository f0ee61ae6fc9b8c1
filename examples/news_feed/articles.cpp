#include "articles.hpp"

#include <array>

namespace {

constexpr std::array todaysArticles{
    Article{
        "tide_pool", "Science", "Tide pools keep a diary, and we are learning to read it",
        "Twice a day the sea turns a page. Biologists have counted what it leaves behind since 1961.",
        "Mara Lindqvist",
        "Kneeling on wet rock with a pencil on a string, three generations of volunteers have written down "
        "every snail, crab and anemone in the same forty pools.\n\n"
        "Laid side by side, the notebooks show what no single summer could: which species moved north, "
        "which came back after the cold winters, and that one sea star has not left its corner since 1998."},
    Article{
        "solar_ferry", "Town", "The last ferry of summer runs on sunlight",
        "The new boat needs no fuel, makes no noise and, says its captain, finally lets her hear the gulls.",
        "Ivo Brandt",
        "Forty square metres of panels on the roof are enough for eight crossings on a bright day. On a grey "
        "one, the battery carries the rest.\n\n"
        "Passengers have noticed mostly the quiet. \"People whisper now,\" says Captain Oyelaran. \"I have "
        "had "
        "to put up a sign that says they may talk.\""},
    Article{
        "rain_bakery", "Food", "The bakery that only opens when it rains",
        "No sign, no hours, no website: customers in Alder Lane look at the sky and bring an umbrella.",
        "Tomasz Wren",
        "Dough rises differently when the air is damp, and Hanna Okafor decided years ago to bake for that "
        "weather only. On dry days she sleeps in.\n\n"
        "Her cinnamon knots are gone within the hour. Regulars claim that they can smell a low pressure area "
        "two streets away."},
    Article{
        "moths", "Nature", "Lighthouse keepers count moths instead of ships",
        "The lamp still turns for a handful of boats. For hundreds of species it is a census.",
        "Petra Salonen",
        "Every morning at six, the glass is checked, the visitors are named and the window is opened so that "
        "they can leave.\n\n"
        "Last August brought a hawk moth that had crossed the whole sea. It rested for a day on the "
        "keeper's raincoat, and was entered into the log like any other vessel."},
    Article{
        "slow_train", "Travel", "The slow train to the lake: five hours, well wasted",
        "The express takes ninety minutes. Here is why nobody in carriage two would change.",
        "Leonie Achterberg",
        "It stops at every halt, twice for goats and once because the driver likes the view. The conductor "
        "lends out binoculars and collects them at the terminus.\n\n"
        "Bring something to share. By the third valley the fold-down tables hold cheese, plums and a game of "
        "cards that seems to have been going on since spring."},
    Article{
        "benches", "Design", "Why the city's new benches face each other",
        "A small turn of ninety degrees, and strangers have begun to talk.", "Samir Haddad",
        "For a century our benches looked at traffic. The new pairs stand close enough for a conversation "
        "and "
        "far enough apart to read in peace.\n\n"
        "Sensors were considered to find out whether they work, then dropped. Instead a student sat nearby "
        "with a thermos for a month and counted laughter."},
    Article{
        "telescope", "Space", "A telescope made of a thousand garden mirrors",
        "Each one is no larger than a plate. Together they see further than the observatory on the hill.",
        "Noor van Dijk",
        "Owners point their mirror at the evening's target and go to bed; software aligns the pictures by "
        "morning.\n\n"
        "The network's first discovery, a comet of modest brightness, carries the name of the street in "
        "which "
        "most of its mirrors stand."},
    Article{
        "silence", "Books", "The library that lends silence",
        "Between two shelves there is a room for borrowing an hour without any sound at all.",
        "Elif Marchetti",
        "You take a pair of headphones, a cushion and a sand-glass. Nothing plays.\n\n"
        "The waiting list is longer than that of the season's thriller, and fines for returning an hour late "
        "are, the librarian says, out of the question."},
    Article{
        "rooftop", "Garden", "Tomatoes on the roof, bees in the clock tower",
        "A school, a bank and the town hall have become one long garden that begins on the fourth floor.",
        "Juno Petrov",
        "Wooden planks join the three roofs. Pupils water in the morning, clerks at noon and the mayor, when "
        "nobody is looking, in the evening.\n\n"
        "The bees came by themselves. They keep the bell company and have, so far, tolerated every hour but "
        "noon."},
    Article{
        "kettles", "Music", "An orchestra of kettles, tuned by hand",
        "It takes eleven minutes to bring the first movement to the boil.", "Aurelio Finch",
        "A dent here, a narrower spout there: the tuner has filed on the tenor kettle since March. It holds "
        "a clean A as long as nobody opens a window.\n\n"
        "After the concert there is tea. It would be a waste, the conductor says, to pour away a whole "
        "string section."},
    Article{
        "walking_football", "Sport", "Walking football fills the stadium",
        "Running is a foul. The average age is 71, and the derby was sold out in a day.", "Greta Molina",
        "What is lost in speed comes back as cunning. Passes are seen coming from afar and arrive all the "
        "same.\n\n"
        "The record scorer is a retired postwoman. Forty years of mornings on foot, she says, and not one of "
        "them was a waste."},
    Article{
        "weather_station", "Technology", "A weather station in every schoolyard",
        "The forecast for the valley now starts with 214 pupils and a spinning cup.", "Daniel Osei",
        "Each class reads wind, rain and pressure at ten o'clock, argues about it, and sends in a number.\n\n"
        "The meteorological office has compared them with its own instruments. On Mondays they are a little "
        "pessimistic; otherwise they are excellent."},
    Article{
        "old_maps", "History", "Old maps, new footpaths",
        "Forty kilometres of forgotten lanes are open again, found in a drawer of the parish archive.",
        "Wilhelmina Stroud",
        "A dotted line from 1842, a row of hawthorn in the wrong place, a gate that leads nowhere: each "
        "turned "
        "out to be a path.\n\n"
        "Walkers are asked to carry shears and good manners. The farmers have asked for the same thing, in "
        "that order."},
    Article{
        "knitted_bridge", "Craft", "The bridge that was knitted",
        "Eighty volunteers, nine tonnes of rope and one dropped stitch that everybody knows about.",
        "Bram Ferreira",
        "It sways, but engineers say that it could carry a marching band, provided that the band does not "
        "march.\n\n"
        "The dropped stitch is near the far bank. It has been left in, with a small brass plaque that "
        "says who talked during row four hundred."},
    Article{"otter", "Animals", "Otters move back into the mill stream",
            "They were gone for sixty years. The miller's cat has not yet made up her mind.",
            "Saoirse Keller",
            "First there was a slide in the mud, then fish scales on the sluice, then a family of four at "
            "breakfast.\n\n"
            "The mill now stops its wheel for an hour at dawn. \"They were here before the flour,\" says the "
            "miller, \"and they are quieter tenants than the students.\""},
    Article{
        "snow", "Weather", "Snow has a smell, and now it has a name",
        "Cold air dulls the nose, and yet everybody knows the moment before the first flakes.",
        "Kaito Nordahl",
        "What we notice is less a scent than the lack of one: damp earth falls silent, and a trace of ozone "
        "remains.\n\n"
        "Readers were asked for a word. From nine hundred suggestions the jury picked one from a child of "
        "six, who simply wrote \"blank\"."},
};

}  // namespace

std::span<const Article> articles() { return todaysArticles; }
