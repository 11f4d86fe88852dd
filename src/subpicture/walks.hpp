// Every subpicture walk, templated on the arithmetic vocabulary.
#pragma once
