// Every stretch walk, templated on the arithmetic vocabulary.
#pragma once
